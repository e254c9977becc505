#include "tools/Ask.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>

namespace sonolet::service {

namespace {

// What is typed is not shown while this lives.
class HiddenInput final {
public:
    HiddenInput() {
        if (tcgetattr(STDIN_FILENO, &shown) == 0) {
            termios hidden = shown;
            hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            changed = tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0;
        }
    }
    ~HiddenInput() {
        if (changed) {
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
            std::fputc('\n', stderr);
        }
    }
    HiddenInput(const HiddenInput&) = delete;
    HiddenInput& operator=(const HiddenInput&) = delete;

private:
    termios shown{};
    bool changed = false;
};

}  // namespace

Secret askPassword(const std::string& prompt) {
    std::string line;
    if (isatty(STDIN_FILENO) != 0) {
        std::fputs(prompt.c_str(), stderr);
        const HiddenInput hidden;
        std::getline(std::cin, line);
    } else {
        std::getline(std::cin, line);
    }
    const Secret password(line.c_str());
    line.assign(line.size(), '\0');
    if (password.value().empty()) {
        throw std::runtime_error("no password was given");
    }
    return password;
}

}  // namespace sonolet::service
