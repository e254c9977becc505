#ifndef SONOLET_LOGGER_H
#define SONOLET_LOGGER_H

#include "kellog.h"

#include <sstream>

// The lines that one source file writes to the device's log.
//
// Each source that logs has one Logger at file scope, made with SONOLET_AT_LOAD so that it stands
// before the objects that are created while the plug-in is loaded. A line is the qualified name of
// the function, followed directly by the text. Threads: any. Errors: none; a line that cannot be
// built is lost.
class Logger final {
public:
    // The log library's numbers: what is below a context's threshold is not written.
    enum Level { Trace = 2, Error = 5 };

    // The function that logs, and its line in the source.
    struct Place {
        // Implicit, so that the line of the call is taken.
        Place(const char* functionName,  // NOLINT(google-explicit-constructor)
              int sourceLine = __builtin_LINE()) noexcept
            : function(functionName), line(sourceLine) {}

        const char* function;  // empty for a line that stands alone
        int line;
    };

    // Both are constants of the source: the file's name as the log shows it, without its ending,
    // and the line that asks the log library for a context.
    explicit Logger(const char* sourceFile, int line = __builtin_LINE()) noexcept
        : file(sourceFile), context(KlogContext::GetLogContext("Sonolet", sourceFile, line)) {}

    // A line of everyday life, and one of what went wrong. Parts are anything that a stream takes.
    template <class... Parts>
    void trace(Place place, const Parts&... parts) const noexcept {
        write(Trace, place, parts...);
    }

    template <class... Parts>
    void error(Place place, const Parts&... parts) const noexcept {
        write(Error, place, parts...);
    }

private:
    template <class... Parts>
    void write(Level level, Place place, const Parts&... parts) const noexcept {
        if (context && context->threshold() > level) {
            return;
        }
        try {
            std::ostringstream text;
            text << place.function;
            static_cast<void>((text << ... << parts));
            KlogPrintf(context, level, file, place.line, "%s", text.str().c_str());
        } catch (...) {  // NOLINT(bugprone-empty-catch): the log must not become a failure
        }
    }

    // Both live as long as the process.
    const char* const file;
    KlogContext* const context;  // owned by the log library
};

// Among the objects made while the plug-in is loaded, these come first.
#define SONOLET_AT_LOAD __attribute__((init_priority(200)))

#endif
