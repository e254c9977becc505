#include "subsonic/Http.h"

#include "subsonic/HttpTransfer.h"

#include <future>
#include <optional>
#include <utility>

namespace sonolet::service {

void Http::Loop::invoke(std::function<void()> action) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (refusing) {
            return;
        }
        actions.push_back(std::move(action));
    }
    g_main_context_wakeup(context.get());
}

void Http::Loop::invokeAfter(std::chrono::milliseconds pause, std::function<void()> action) const {
    GSource* source = g_timeout_source_new(static_cast<guint>(pause.count()));
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            (*static_cast<std::function<void()>*>(data))();
            return G_SOURCE_REMOVE;
        },
        new std::function<void()>(std::move(action)),
        [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
    g_source_attach(source, context.get());
    g_source_unref(source);
}

Http::Loop::Actions Http::Loop::take() {
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(actions, {});
}

void Http::Loop::run() {
    g_main_context_push_thread_default(context.get());
    // Waits are bounded by the transfers; connections that rest cost the server a worker.
    session = soup_session_new_with_options("timeout", 0, "idle-timeout", 5, "max-conns-per-host",
                                            6, nullptr);
    while (!stopped || !transfers.empty()) {
        for (const auto& action : take()) {
            action();
        }
        if (!stopped || !transfers.empty()) {
            g_main_context_iteration(context.get(), TRUE);
        }
    }
    soup_session_abort(session);
    g_object_unref(session);
    g_main_context_pop_thread_default(context.get());
    // Whoever waits for what was asked last waits in vain.
    take();
}

void Http::Loop::stop() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (refusing) {
            return;
        }
        refusing = true;
        actions.emplace_back([this] {
            stopped = true;
            for (const auto& transfer : transfers) {
                transfer->cancel();
            }
        });
    }
    g_main_context_wakeup(context.get());
    thread.join();
}

Http::Http(std::chrono::milliseconds longestWait) : loop(std::make_unique<Loop>(longestWait)) {}

Http::~Http() {
    stop();
}

void Http::stop() {
    loop->stop();
}

void Http::after(std::chrono::milliseconds pause, std::function<void()> action) {
    loop->invoke([this, pause, action = std::move(action)] { loop->invokeAfter(pause, action); });
}

std::shared_ptr<Http::Transfer> Http::begin(HttpRequest request, Listener listener) {
    auto transfer = std::make_shared<Transfer>(*loop, std::move(request), std::move(listener));
    loop->invoke([transfer] { transfer->start(); });
    return transfer;
}

void Http::cancel(const std::shared_ptr<Transfer>& transfer) {
    transfer->cancel();
}

HttpReply Http::fetch(const HttpRequest& request, std::size_t largest) {
    struct Outcome {
        HttpReply reply;
        std::optional<HttpError> error;
    };
    std::future<Outcome> over;
    {
        // Held by the transfer alone: one that is dropped breaks the promise.
        auto promise = std::make_shared<std::promise<Outcome>>();
        auto outcome = std::make_shared<Outcome>();
        over = promise->get_future();
        Listener listener;
        listener.head = [outcome](const HttpHead& head) {
            outcome->reply.head = head;
            return true;
        };
        listener.bytes = [outcome, largest](const char* bytes, std::size_t count) {
            std::string& body = outcome->reply.body;
            if (body.size() + count > largest) {
                outcome->error.emplace(HttpError::Kind::broken, "the answer has more than " +
                                                                    std::to_string(largest >> 20) +
                                                                    " MiB");
                return false;
            }
            body.append(bytes, count);
            return true;
        };
        listener.over = [promise, outcome](const HttpError* error) {
            if (error != nullptr) {
                outcome->error.emplace(*error);
            }
            promise->set_value(std::move(*outcome));
        };
        begin(request, std::move(listener));
    }
    try {
        Outcome outcome = over.get();
        if (outcome.error) {
            throw HttpError(*outcome.error);
        }
        return std::move(outcome.reply);
    } catch (const std::future_error&) {
        throw HttpError(HttpError::Kind::stopped, "the session has ended");
    }
}

}  // namespace sonolet::service
