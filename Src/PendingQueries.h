#ifndef SONOLET_PENDING_QUERIES_H
#define SONOLET_PENDING_QUERIES_H

#include "Answer.h"
#include "Handle.h"
#include "jspp/call_parameters.h"
#include "jspp/object.h"

#include <map>
#include <memory>

// The queries that libspotify has not answered yet, each with the script function that waits for
// the answer. Script thread; made on first use, never freed.
//
// A query belongs to its request until it is answered: a page that keeps only its function still
// gets its answer, and so does one whose host refused the script object of the query. A function
// whose document has gone is not called; its query stays until libspotify answers it.
class PendingQueries final {
public:
    static PendingQueries& getInstance();

    PendingQueries(const PendingQueries&) = delete;
    PendingQueries& operator=(const PendingQueries&) = delete;

    // Starts a query and answers its wrapper: `request` takes the completion callback and the user
    // data for libspotify and returns the handle that it created. Throws when there is none. The
    // completion comes from sp_session_process_events, never from inside the request.
    template <class Kind, class Request>
    static void
    start(jspp::function_context& context, const jspp::object& callback, const Request& request) {
        auto& queries = getInstance().queries;
        auto query = std::make_unique<Query<Kind>>(callback);
        Query<Kind>& pending = *query;
        queries.emplace(&pending, std::move(query));
        pending.created.reset(request(&complete<Kind>, static_cast<void*>(&pending)));
        if (!pending.created) {
            queries.erase(&pending);
            throwNotRetrieved();
        }
        answer(pending.created.get(), context);
    }

    // The session goes, and nobody answers any more. To be called before the library's session is
    // released; each query's reference goes here.
    void clear() noexcept { queries.clear(); }

private:
    // A query of any kind, and the function that waits.
    struct Pending {
        explicit Pending(const jspp::object& function) : callback(function) {}
        Pending(const Pending&) = delete;
        Pending& operator=(const Pending&) = delete;
        virtual ~Pending() = default;

        // May refer to nothing any more, when its document has gone.
        const jspp::object callback;
    };

    template <class Kind>
    struct Query final : Pending {
        using Pending::Pending;
        // Given back when the query has been answered, after the second wrapper has its own.
        Created<Kind> created;
    };

    // libspotify has answered: queues the call of the script function with another wrapper than the
    // one that start() answered.
    template <class Kind>
    static void complete(Kind* result, void* userData) noexcept {
        try {
            const std::unique_ptr<Pending> query = getInstance().take(userData);
            if (query) {
                jspp::call_parameters parameters;
                parameters.add(wrapped(result));
                query->callback.call_delayed(parameters);
            }
        } catch (...) {
            logLost();
        }
    }

    PendingQueries() = default;

    // Empty for a query that is not pending.
    std::unique_ptr<Pending> take(const void* userData);
    static void logLost() noexcept;

    std::map<const void*, std::unique_ptr<Pending>> queries;  // by their user data
};

#endif
