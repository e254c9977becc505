// sonolet-trace: reads what the layer has written.

#include "tools/Arguments.h"
#include "tools/Follow.h"
#include "tools/Html.h"
#include "tools/Summary.h"
#include "tools/TraceReader.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr char help[] = R"(usage: sonolet-trace FILE [options]

Reads a timeline that libSonolet-layer.so.1.0 has written (SONOLET_TRACE, --trace), with FILE.old
before it when there is one. Without an option: a summary.

  --follow         print the calls themselves, and go on as they are written
    --object TEXT  only those with an object or handle whose kind or address
                   has this text
    --member TEXT  only those whose name has this text
    --thread TEXT  only those of a thread whose number or name has this text
  --html           write one page, FILE.html, that shows the timeline
  --rows N         how many rows each table of the summary has (default: 20)
  --help           show this text
  --version        print the version

Exit codes: 0 done; 1 FILE is no timeline; 2 an option or the file is wrong.
)";

struct Options {
    std::string file;
    bool follows = false;
    bool html = false;
    Filter filter;
    std::size_t rows = 20;
};

Options parse(const std::vector<std::string>& words) {
    Options options;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const auto value = [&]() -> const std::string& {
            if (++i == words.size()) {
                throw std::invalid_argument(word + " takes a value");
            }
            return words[i];
        };
        if (word == "--follow") {
            options.follows = true;
        } else if (word == "--html") {
            options.html = true;
        } else if (word == "--object") {
            options.filter.object = value();
        } else if (word == "--member") {
            options.filter.member = value();
        } else if (word == "--thread") {
            options.filter.thread = value();
        } else if (word == "--rows") {
            const std::string& number = value();
            char* end = nullptr;
            options.rows = std::strtoul(number.c_str(), &end, 10);
            if (number.find_first_not_of("0123456789") != std::string::npos || *end != '\0' ||
                options.rows == 0) {
                throw std::invalid_argument("--rows takes a number above 0, not \"" + number + '"');
            }
        } else if (word[0] == '-') {
            throw std::invalid_argument("unknown option " + word + " (--help lists them)");
        } else if (!options.file.empty()) {
            throw std::invalid_argument("one file at a time: " + options.file + " and then " +
                                        word);
        } else {
            options.file = word;
        }
    }
    if (options.file.empty()) {
        throw std::invalid_argument("no file given (sonolet-trace FILE [options])");
    }
    if (options.follows && options.html) {
        throw std::invalid_argument("--follow and --html are not for one call: one prints the "
                                    "timeline, the other writes a page of it");
    }
    const Filter& filter = options.filter;
    if (!options.follows && (filter.object + filter.member + filter.thread) != "") {
        throw std::invalid_argument("--object, --member and --thread belong to --follow");
    }
    return options;
}

std::ifstream opened(const std::string& file) {
    std::ifstream input(file, std::ios::binary);
    if (!input) {
        throw std::invalid_argument(file + ": " + std::generic_category().message(errno));
    }
    return input;
}

// Every event of the file, the older part first; false when it is no trace.
template <class Visit>
bool readAll(const std::string& file, const Visit& visit) {
    std::ifstream newer = opened(file);
    bool isTrace = false;
    std::size_t broken = 0;
    const auto read = [&](std::istream& input) {
        TraceReader reader(input);
        TraceEvent event;
        while (reader.next(event)) {
            visit(event);
        }
        isTrace = isTrace || reader.isTrace();
        broken += reader.broken();
    };
    std::ifstream older(file + ".old", std::ios::binary);
    if (older) {
        read(older);
    }
    read(newer);
    if (isTrace && broken > 0) {
        std::fprintf(stderr, "sonolet-trace: %zu broken lines are left out\n", broken);
    }
    return isTrace;
}

int run(const Options& options) {
    bool isTrace = false;
    if (options.follows) {
        isTrace = follow(options.file, options.filter);
    } else if (options.html) {
        Html page;
        isTrace = readAll(options.file, [&](const TraceEvent& event) { page.add(event); });
        if (isTrace) {
            const std::string name = options.file + ".html";
            std::ofstream output(name, std::ios::binary);
            // As private as the trace.
            std::error_code ignored;
            std::filesystem::permissions(name, std::filesystem::status(options.file).permissions(),
                                         ignored);
            output << page.text();
            if (!output.flush()) {
                throw std::invalid_argument(name + ": " + std::generic_category().message(errno));
            }
            std::printf("%s\n", name.c_str());
        }
    } else {
        Summary summary;
        isTrace = readAll(options.file, [&](const TraceEvent& event) { summary.add(event); });
        if (isTrace) {
            std::fputs(summary.text(options.rows).c_str(), stdout);
        }
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw std::runtime_error("standard output: " + std::generic_category().message(errno));
    }
    if (!isTrace) {
        std::fprintf(stderr, "sonolet-trace: %s: is no timeline of the layer\n",
                     options.file.c_str());
        return 1;
    }
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    try {
        const std::vector<std::string> words(argv + 1, argv + argc);
        if (tellsAbout("sonolet-trace", help, words)) {
            return 0;
        }
        return run(parse(separated(words, {"--object", "--member", "--thread", "--rows"})));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sonolet-trace: %s\n", error.what());
        return 2;
    }
}
