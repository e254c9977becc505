#include "runner/Signals.h"

#include <glib-unix.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace {

std::atomic<int> eventOfHandlers{-1};
void (*calledByHandlers)() noexcept = nullptr;

void handle(int) {
    const int saved = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(eventOfHandlers, &one, sizeof one);
    calledByHandlers();
    errno = saved;
}

}  // namespace

Signals::Signals(std::function<void()> signalCallback, void (*handler)() noexcept)
    : callback(std::move(signalCallback)), event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (event < 0) {
        throw std::runtime_error("no file descriptor left for signals");
    }
    eventOfHandlers = event;
    calledByHandlers = handler;
    source = g_unix_fd_add(
        event, G_IO_IN,
        [](gint fd, GIOCondition, gpointer self) -> gboolean {
            std::uint64_t count = 0;
            if (::read(fd, &count, sizeof count) > 0) {
                static_cast<Signals*>(self)->callback();
            }
            return G_SOURCE_CONTINUE;
        },
        this);
    struct sigaction action = {};
    action.sa_handler = handle;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

Signals::~Signals() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    g_source_remove(source);
    eventOfHandlers = -1;
    close(event);
}
