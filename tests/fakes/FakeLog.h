#ifndef SONOLET_TESTS_FAKES_FAKELOG_H
#define SONOLET_TESTS_FAKES_FAKELOG_H

#include <string>
#include <vector>

// The device's log, kept in memory. Never destroyed: contexts are asked for before main.
//
// Threads: lines may come from any thread; settings and record are for while no other thread logs.
struct FakeLog {
    struct Line {
        int level;
        std::string file;
        int line;
        std::string text;
    };

    static FakeLog& get();
    void reset();  // back to keeping every line, with none kept so far; contexts stay

    // How often exactly this text was written at this level.
    int count(int level, const std::string& text) const;

    int threshold = 0;       // of every context
    bool keepsLines = true;  // false for tests that log a great deal
    std::vector<Line> lines;
    std::vector<std::string> contexts;  // "Sonolet Src/main:18"
};

#endif
