// sonolet-bench: runs the programs that measure and makes one table of their figures.

#include "Figures.h"

#include <stdio.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using figures::Figure;

constexpr char usage[] =
    "usage: sonolet-bench [--json | --markdown] [--device DIR] [GROUP...]\n"
    "groups: script browser load plugin sound base64 memory size growth layer search server\n"
    "playing player (all of these, if none is named), device\n";

// Wrong use.
struct Misuse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class Form { Table, Json, Markdown };

struct Options {
    Form form = Form::Table;
    std::string device;  // folder of a build for a 32-bit device; empty: none
    std::vector<std::string> groups;
};

const std::array<std::string, 14> allGroups = {"script", "browser", "load",    "plugin", "sound",
                                               "base64", "memory",  "size",    "growth", "layer",
                                               "search", "server",  "playing", "player"};

Options parse(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--json") {
            options.form = Form::Json;
        } else if (argument == "--markdown") {
            options.form = Form::Markdown;
        } else if (argument == "--device") {
            if (++i == arguments.size()) {
                throw Misuse("--device takes a folder");
            }
            options.device = arguments[i];
        } else if (argument == "device" ||
                   std::find(allGroups.begin(), allGroups.end(), argument) != allGroups.end()) {
            options.groups.push_back(argument);
        } else {
            throw Misuse("no group or option " + argument);
        }
    }
    if (options.groups.empty()) {
        options.groups.assign(allGroups.begin(), allGroups.end());
    }
    return options;
}

std::string quoted(const std::string& text) {
    std::string out = "'";
    for (const char c : text) {
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return out + '\'';
}

// The figures that a command reports.
std::vector<Figure> figuresOf(const std::string& command) {
    FILE* const output = popen(command.c_str(), "r");
    if (output == nullptr) {
        throw std::runtime_error("cannot start " + command);
    }
    std::string text;
    for (int c = fgetc(output); c != EOF; c = fgetc(output)) {
        text += static_cast<char>(c);
    }
    if (pclose(output) != 0) {
        throw std::runtime_error("failed: " + command);
    }
    std::vector<Figure> figures;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        figures.push_back(figures::parse(line));
    }
    return figures;
}

std::string processor() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.rfind("model name", 0) == 0) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown processor";
}

std::string number(double value, int moreDigits = 0) {
    std::array<char, 32> text{};
    const int digits = value >= 100 ? 0 : value >= 10 ? 1 : 2;
    snprintf(text.data(), text.size(), "%.*f", digits + moreDigits, value);
    return text.data();
}

using Row = std::array<std::string, 7>;

// "%s" and what is between the columns of a table.
constexpr std::array<const char*, 7> columns = {"%-62s", " %12s",   "  %-34s", " %12s",
                                                " %6s",  "  %-13s", " %s"};

Row rowOf(const Figure& figure) {
    const std::string unit = figure.unit.empty() ? "" : ' ' + figure.unit;
    if (figure.goal == Figure::Goal::None) {
        return {figure.what, number(figure.value) + unit};
    }
    return {figure.what,
            number(figure.value) + unit,
            figure.peer,
            number(figure.peerValue) + unit,
            number(figure.ratio(), 1),
            (figure.goal == Figure::Goal::AtMost ? "at most " : "at least ") + number(figure.bound),
            figure.holds() ? "holds" : "does not hold"};
}

void printTable(const std::vector<Figure>& figures, bool isMarkdown) {
    std::vector<Row> rows = {{"figure", "measured", "against", "", "ratio", "goal"}};
    std::transform(figures.begin(), figures.end(), std::back_inserter(rows), rowOf);
    std::printf("%s, %u threads; %s\n\n", processor().c_str(), std::thread::hardware_concurrency(),
                SONOLET_BUILD_KIND);
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            std::printf(isMarkdown ? "| %s " : columns[i], row[i].c_str());
        }
        std::puts(isMarkdown ? "|" : "");
        if (isMarkdown && &row == &rows.front()) {
            std::puts("|---|---|---|---|---|---|---|");
        }
    }
}

// No name has a character that JSON would want escaped.
void printJson(const std::vector<Figure>& figures) {
    std::printf("{\"machine\": \"%s\", \"threads\": %u, \"build\": \"%s\", \"figures\": [\n",
                processor().c_str(), std::thread::hardware_concurrency(), SONOLET_BUILD_KIND);
    for (const Figure& figure : figures) {
        std::printf("  {\"figure\": \"%s\", \"value\": %.6g, \"unit\": \"%s\"", figure.what.c_str(),
                    figure.value, figure.unit.c_str());
        if (figure.goal != Figure::Goal::None) {
            std::printf(", \"against\": \"%s\", \"peer\": %.6g, \"ratio\": %.6g, \"%s\": %.6g, "
                        "\"holds\": %s",
                        figure.peer.c_str(), figure.peerValue, figure.ratio(),
                        figure.goal == Figure::Goal::AtMost ? "at_most" : "at_least", figure.bound,
                        figure.holds() ? "true" : "false");
        }
        std::printf("}%s\n", &figure == &figures.back() ? "" : ",");
    }
    std::printf("]}\n");
}

// What browsers show of the engine, beside the runner.
std::vector<Figure> besideRunner(std::vector<Figure> browser, const std::vector<Figure>& runner) {
    const std::map<std::string, double> limits = {{"kept call", 450},
                                                  {"wrapper made, called once and dropped", 5000}};
    // What comes after those is of that interface alone.
    for (std::size_t i = 0; i < runner.size(); ++i) {
        Figure& each = browser.at(i);
        const auto limit = limits.find(each.what);
        each = limit != limits.end()
                   ? figures::within(each.what, each.value, each.unit, limit->second)
                   : figures::atMost(each.what, each.value, each.unit, "the runner",
                                     runner[i].value, 2);
        each.what += ", as in browsers";
    }
    return browser;
}

void run(const Options& options) {
    const std::filesystem::path here =
        std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const auto program = [&](const std::string& name) { return quoted(here / name); };
    std::vector<Figure> figures;
    const auto add = [&figures](const std::vector<Figure>& more) {
        figures.insert(figures.end(), more.begin(), more.end());
    };
    for (const std::string& group : options.groups) {
        std::cerr << "measuring: " << group << '\n';
        if (group == "script" || group == "load") {
            add(figuresOf(program("sonolet-bench-script") + ' ' + group));
        } else if (group == "browser") {
            add(besideRunner(figuresOf(program("sonolet-bench-browser")),
                             figuresOf(program("sonolet-bench-runner"))));
        } else if (group == "search" || group == "server" || group == "playing" ||
                   group == "layer" || group == "player" || group == "device") {
            add(figuresOf(program("sonolet-bench-" + group)));
        } else if (group == "memory") {
            add(figuresOf(program("sonolet-bench-memory")));
            if (!options.device.empty()) {
                add(figuresOf("qemu-i386 " + quoted(options.device + "/bin/sonolet-bench-memory")));
            }
        } else if (group == "size") {
            if (!options.device.empty()) {
                const auto size = static_cast<double>(
                    std::filesystem::file_size(options.device + "/bin/libSonolet.stripped"));
                add({figures::within("stripped plug-in, i686, -Os", size / 1024, "KiB", 350)});
            }
        } else {
            add(figuresOf(program("sonolet-bench-plugin") + ' ' + group));
        }
    }
    if (options.form == Form::Json) {
        printJson(figures);
    } else {
        printTable(figures, options.form == Form::Markdown);
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        run(parse({argv + 1, argv + argc}));
        return 0;
    } catch (const Misuse& error) {
        std::cerr << "sonolet-bench: " << error.what() << '\n' << usage;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "sonolet-bench: " << error.what() << '\n';
        return 1;
    }
}
