#ifndef SONOLET_PENDING_QUERIES_H
#define SONOLET_PENDING_QUERIES_H

#include "Handle.h"
#include "jspp/call_parameters.h"
#include "jspp/object.h"

#include <map>
#include <memory>

// The queries that libspotify has not answered yet, each with the script function that waits for
// the answer. Script thread; made on first use, never freed.
//
// A query belongs to its request until it is answered: a page that keeps only its function still
// gets its answer.
class PendingQueries final {
public:
    static PendingQueries& getInstance();

    PendingQueries(const PendingQueries&) = delete;
    PendingQueries& operator=(const PendingQueries&) = delete;

    // Starts a query: `request` takes the user data for libspotify and returns the handle that it
    // created, which is lent to the caller. Throws when there is none. The answer comes from
    // sp_session_process_events, never from inside the request.
    template <class Kind, class Request>
    Kind* start(const jspp::object& callback, const Request& request) {
        auto query = std::make_unique<Query<Kind>>(callback);
        Query<Kind>& pending = *query;
        queries.emplace(&pending, std::move(query));
        pending.created = request(static_cast<void*>(&pending));
        if (!pending.created) {
            queries.erase(&pending);
            throwNotRetrieved();
        }
        return pending.created;
    }

    // libspotify has answered: queues the call of the script function with the wrapper that `wrap`
    // makes of the result.
    template <class Kind, class Wrap>
    void complete(Kind* result, void* userData, const Wrap& wrap) noexcept {
        try {
            const std::unique_ptr<Pending> query = take(userData);
            if (query) {
                jspp::call_parameters parameters;
                parameters.add(wrap(result));
                query->callback.call_delayed(parameters);
            }
        } catch (...) {
            logLost();
        }
    }

    // The session goes, and nobody answers any more.
    void clear() noexcept { queries.clear(); }

private:
    struct Pending {
        explicit Pending(const jspp::object& function) : callback(function) {}
        Pending(const Pending&) = delete;
        Pending& operator=(const Pending&) = delete;
        virtual ~Pending() = default;

        const jspp::object callback;
    };

    template <class Kind>
    struct Query final : Pending {
        using Pending::Pending;
        ~Query() override {
            if (created) {
                HandleTraits<Kind>::release(created);
            }
        }

        Kind* created = nullptr;  // owned: the reference that the request returned
    };

    PendingQueries() = default;

    // Empty for a query that is not pending.
    std::unique_ptr<Pending> take(const void* userData);
    static void logLost() noexcept;

    std::map<const void*, std::unique_ptr<Pending>> queries;  // by their user data
};

#endif
