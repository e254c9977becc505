#ifndef SONOLET_SERVICE_QUERIES_QUERY_H
#define SONOLET_SERVICE_QUERIES_QUERY_H

#include "objects/Handle.h"
#include "objects/Library.h"
#include "source/Answers.h"

#include "libspotify/api.h"

#include <vector>

namespace sonolet::service {

// A question to the catalogue, and its answer once it is there.
//
// find() is called first, then finish(), then notify(), each once; a query that is cancelled misses
// the first, or is still in it when the second comes.
//
// Threads: find() runs on the worker; everything else is for the thread that uses the library. What
// find() leaves aside is the owner's from finish() on. Ownership: whoever has a reference; the
// session holds one while the query is under way.
class Query : public Handle {
public:
    bool isLoaded() const { return loaded; }
    // SP_ERROR_IS_LOADING until it is loaded.
    sp_error error() const { return result; }

    // Looks for the answer and keeps it aside; nothing that the owner reads changes. Answers what
    // error() is to be. What it throws is a line of the log, and
    // SP_ERROR_OTHER_PERMANENT unless it has a number of its own.
    virtual sp_error find(Answers& answers) = 0;

    // The query is loaded from here on: with what was found, or with an error and nothing.
    void finish(sp_error error, Library& library);

    // Calls the one who asked. The session sees to it that this happens once.
    virtual void notify() = 0;

protected:
    // Makes handles of what was found, once, on the owner's thread. What it throws is
    // SP_ERROR_OTHER_TRANSIENT.
    virtual void take(Library& library) = 0;

    // An element, or NULL for an index outside.
    template <typename Object>
    static Object* at(const std::vector<Ref<Object>>& list, int index) {
        return index < 0 || index >= size(list) ? nullptr : list[index].get();
    }
    template <typename Element>
    static int size(const std::vector<Element>& list) {
        return static_cast<int>(list.size());
    }

private:
    bool loaded = false;
    sp_error result = SP_ERROR_IS_LOADING;
};

// A query that tells its completion to a function of the interface, or to nobody: a program may
// give NULL and look from time to time. The function is called once the query is loaded, whether it
// has found anything or not, and with an error too.
template <typename Result>
class QueryFor : public Query {
public:
    using Callback = void(Result* result, void* userdata);

    QueryFor(Callback* completion, void* completionData)
        : callback(completion), userdata(completionData) {}

    void notify() final {
        if (callback != nullptr) {
            callback(static_cast<Result*>(this), userdata);
        }
    }

private:
    // Constant after construction.
    Callback* const callback;
    void* const userdata;
};

}  // namespace sonolet::service

#endif
