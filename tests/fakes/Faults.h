#ifndef SONOLET_TESTS_FAKES_FAULTS_H
#define SONOLET_TESTS_FAKES_FAULTS_H

#include <array>
#include <utility>

// Where the plug-in ends and what lies around it begins, for tests that let the one fail the other.
//
// Everything that the plug-in asks for and may be refused is a point: memory, a script object or a
// call of the host, a handle or an error code of the library, a backend. Points count up from 1.
// Threads: one, while `counting`; else the counts are left alone.
struct Faults {
    enum Kind { Memory, Host, Library, Backend, Kinds };

    static Faults& get() {
        static Faults instance;
        return instance;
    }

    // For the fakes: true when this point is the one to fail.
    bool strikes(Kind kind) {
        if (!counting || !inPlugin) {
            return false;
        }
        ++points[kind];
        return ++passed == failing && (struck = true);
    }

    void start(unsigned long pointToFail) {
        *this = Faults();
        counting = true;
        failing = pointToFail;
    }
    void stop() { counting = false; }

    std::array<unsigned long, Kinds> points{};
    unsigned long passed = 0;
    unsigned long failing = 0;  // 0: none
    bool counting = false;
    bool struck = false;

    static inline thread_local bool inPlugin = false;
};

// For the length of a block this thread is inside the plug-in, or inside what it has called.
template <bool inside>
class Side {
public:
    Side() : before(std::exchange(Faults::inPlugin, inside)) {}
    ~Side() { Faults::inPlugin = before; }
    Side(const Side&) = delete;
    Side& operator=(const Side&) = delete;

private:
    const bool before;
};
using InPlugin = Side<true>;
using Outside = Side<false>;

#endif
