#ifndef SONOLET_TESTS_FAKES_FAKELOG_H
#define SONOLET_TESTS_FAKES_FAKELOG_H

#include <string>
#include <vector>

// The device's log, kept in memory. Never destroyed: contexts are asked for before main.
//
// Threads: lines may come from any thread; the settings and the record are read and changed while
// no other thread logs.
struct FakeLog {
    struct Line {
        int level;
        std::string file;
        int line;
        std::string text;
    };
    struct Place {
        std::string module;
        std::string file;
        int line;
    };

    static FakeLog& get();

    // Back to keeping every line, with none kept so far; contexts stay.
    void reset();

    // How often exactly this text was written at this level.
    int count(int level, const std::string& text) const;
    bool knows(const std::string& module, const std::string& file, int line) const;

    int threshold = 0;        // of every context
    bool printsLines = true;  // false: lines are counted by nobody, for tests that log a great deal
    std::vector<Line> lines;
    std::vector<Place> contexts;
};

#endif
