#include "subsonic/HttpTransfer.h"

#include <algorithm>
#include <string>

namespace sonolet::service {

namespace {

constexpr std::size_t chunk = 64 << 10;

HttpError::Kind kindOf(const GError& error) {
    if (error.domain == G_RESOLVER_ERROR) {
        return HttpError::Kind::unknownHost;
    }
    if (error.domain == G_TLS_ERROR) {
        return HttpError::Kind::untrusted;
    }
    if (error.domain != G_IO_ERROR) {
        return HttpError::Kind::broken;
    }
    switch (error.code) {
    case G_IO_ERROR_CONNECTION_REFUSED:
    case G_IO_ERROR_HOST_UNREACHABLE:
    case G_IO_ERROR_NETWORK_UNREACHABLE:
        return HttpError::Kind::refused;
    case G_IO_ERROR_HOST_NOT_FOUND:
        return HttpError::Kind::unknownHost;
    case G_IO_ERROR_TIMED_OUT:
        return HttpError::Kind::timeout;
    default:
        return HttpError::Kind::broken;
    }
}

HttpHead headOf(SoupMessage* message) {
    HttpHead head;
    head.status = static_cast<int>(soup_message_get_status(message));
    SoupMessageHeaders* headers = soup_message_get_response_headers(message);
    if (const char* type = soup_message_headers_get_content_type(headers, nullptr)) {
        head.type = type;
        std::transform(head.type.begin(), head.type.end(), head.type.begin(), g_ascii_tolower);
    }
    if (const char* etag = soup_message_headers_get_one(headers, "ETag")) {
        head.etag = etag;
    }
    if (soup_message_headers_get_encoding(headers) == SOUP_ENCODING_CONTENT_LENGTH) {
        head.length = soup_message_headers_get_content_length(headers);
    }
    goffset from = 0;
    goffset last = 0;
    goffset total = -1;
    if (head.status == SOUP_STATUS_PARTIAL_CONTENT &&
        soup_message_headers_get_content_range(headers, &from, &last, &total)) {
        head.from = from;
        head.total = total;
    } else {
        head.total = head.length;
    }
    return head;
}

}  // namespace

// ---- The thread ----

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

// ---- A request on its way ----

void Http::Transfer::start() {
    const Self self = shared_from_this();
    message.reset(soup_message_new("GET", request.url.c_str()));
    if (message == nullptr) {
        const HttpError error(HttpError::Kind::unknownHost, "the address is no address");
        listener.over(&error);
        return;
    }
    soup_message_add_flags(message.get(), SOUP_MESSAGE_NO_REDIRECT);
    SoupMessageHeaders* headers = soup_message_get_request_headers(message.get());
    if (request.from > 0) {
        soup_message_headers_set_range(headers, request.from, -1);
        if (!request.ifRange.empty()) {
            soup_message_headers_replace(headers, "If-Range", request.ifRange.c_str());
        }
    }
    loop.transfers.insert(self);
    beginWait();
    soup_session_send_async(loop.session, message.get(), G_PRIORITY_DEFAULT, cancellable.get(),
                            sent, new Self(self));
}

void Http::Transfer::beginWait() {
    timer.reset(g_timeout_source_new(static_cast<guint>(loop.patience.count())));
    g_source_set_callback(
        timer.get(),
        [](gpointer data) -> gboolean {
            auto* self = static_cast<Transfer*>(data);
            self->timedOut = true;
            self->cancel();
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
    g_source_attach(timer.get(), loop.context.get());
}

void Http::Transfer::sent(GObject* session, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Self> self(static_cast<Self*>(data));
    Transfer& transfer = **self;
    GError* raw = nullptr;
    transfer.stream.reset(soup_session_send_finish(SOUP_SESSION(session), result, &raw));
    if (raw != nullptr) {
        const HttpOwned<GError> error(raw);
        transfer.end(*error);
        return;
    }
    const HttpHead head = headOf(transfer.message.get());
    transfer.missing = head.length;
    if (!transfer.listener.head(head)) {
        transfer.end(nullptr);
        return;
    }
    transfer.buffer.resize(chunk);
    transfer.read();
}

void Http::Transfer::read() {
    beginWait();
    g_input_stream_read_async(stream.get(), buffer.data(), buffer.size(), G_PRIORITY_DEFAULT,
                              cancellable.get(), got, new Self(shared_from_this()));
}

void Http::Transfer::got(GObject* stream, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Self> self(static_cast<Self*>(data));
    Transfer& transfer = **self;
    GError* raw = nullptr;
    const gssize count = g_input_stream_read_finish(G_INPUT_STREAM(stream), result, &raw);
    if (raw != nullptr) {
        const HttpOwned<GError> error(raw);
        transfer.end(*error);
        return;
    }
    if (count == 0 && transfer.missing > 0) {
        const HttpError error(HttpError::Kind::broken, std::to_string(transfer.missing) +
                                                           " bytes of the answer are missing");
        transfer.end(&error);
        return;
    }
    if (count == 0 ||
        !transfer.listener.bytes(transfer.buffer.data(), static_cast<std::size_t>(count))) {
        transfer.end(nullptr);
        return;
    }
    transfer.missing -= transfer.missing < 0 ? 0 : count;
    transfer.read();
}

void Http::Transfer::end(const GError& error) {
    if (timedOut) {
        const HttpError late(HttpError::Kind::timeout, "nothing came for some time");
        end(&late);
    } else if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        const HttpError stopped(HttpError::Kind::stopped, "it was given up");
        end(&stopped);
    } else {
        const HttpError failure(kindOf(error), error.message);
        end(&failure);
    }
}

void Http::Transfer::end(const HttpError* error) {
    timer.reset();
    // A stream that is dropped unread closes its connection, or drains what has come already.
    stream.reset();
    message.reset();
    const Listener told = std::exchange(listener, {});
    loop.transfers.erase(shared_from_this());
    told.over(error);
}

}  // namespace sonolet::service
