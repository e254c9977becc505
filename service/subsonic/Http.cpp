#include "subsonic/Http.h"

#include "subsonic/HttpTransfer.h"

#include <future>
#include <optional>
#include <utility>

namespace sonolet::service {

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
    loop->invoke([transfer] { transfer->cancel(); });
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
