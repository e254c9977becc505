#ifndef SONOLET_LAYER_TOOLS_HTML_H
#define SONOLET_LAYER_TOOLS_HTML_H

#include "tools/TraceReader.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

// One web page that shows a timeline, with everything it needs in it.
//
// Threads: one. Units: microseconds. Memory: the latest 400000 slices; how many were dropped before
// them stands in the page. Errors: none; ends without a beginning are left out, slices without an
// end are shown open.
class Html final {
public:
    // Each event once, in the order of the file.
    void add(const TraceEvent& event);
    // The page, in UTF-8. It loads nothing, and no text of the trace can end its script.
    std::string text() const;

private:
    struct Slice {
        std::int64_t thread;
        std::string name;
        std::string category;
        double time;
        double duration;  // below 0: it has not ended
        std::size_t depth;
        std::string detail;
    };

    // Names by the system's numbers of the threads.
    std::map<std::int64_t, std::string> threads;
    std::deque<Slice> slices;  // the latest
    std::size_t dropped = 0;
    std::map<std::int64_t, std::vector<std::size_t>> open;  // numbers of slices, from the first on
    // By the arrow's number: thread and time.
    std::map<std::int64_t, std::pair<std::int64_t, double>> arrowBegins;
    nlohmann::json arrows = nlohmann::json::array();
    nlohmann::json marks = nlohmann::json::array();
    std::map<std::string, nlohmann::json> counters;
};

#endif
