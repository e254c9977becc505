#ifndef SONOLET_SERVICE_API_API_H
#define SONOLET_SERVICE_API_API_H

#include "session/Session.h"

#include "libspotify/api.h"

#include <cstddef>
#include <memory>
#include <string>

// The door between the C interface and the classes behind it. Nothing is thrown through it, a NULL
// handle is never followed, and a handle of a session that was released is refused.
//
// Threads: as the interface says, all functions but the counting of references belong to the thread
// that processes the session's events. Errors: what is thrown behind the door is a line on standard
// error and a number; a function that answers something else answers what stands for nothing.
namespace sonolet::service {

// The living session, if that is what the handle names; it lives as long as the answer is held.
std::shared_ptr<Session> sessionOf(const sp_session* handle) noexcept;

// The living session, or NULL. For functions that are handed no session.
std::shared_ptr<Session> currentSession() noexcept;

// The living session's library, or NULL.
std::shared_ptr<Library> currentLibrary() noexcept;

// Tells what went wrong inside a function that has no room for it, and gives its number. To be
// called in a catch block alone. What SQLite found damaged in the catalogue has it made again; what
// passes, as a full disk does, and a want of memory are SP_ERROR_OTHER_TRANSIENT.
sp_error explain() noexcept;

// What `action` answers, or what it threw as a number.
template <typename Action>
sp_error guarded(Action action) noexcept {
    try {
        return action();
    } catch (...) {
        return explain();
    }
}

// What `action` answers, or `otherwise` when it throws. The cause is a line on standard error.
template <typename Result, typename Action>
Result guardedOr(Result otherwise, Action action) noexcept {
    try {
        return action();
    } catch (...) {
        explain();
        return otherwise;
    }
}

// guarded() for a session's operation; SP_ERROR_INVALID_INDATA without that session.
template <typename Action>
sp_error withSession(const sp_session* handle, Action action) noexcept {
    return guarded([&] {
        const std::shared_ptr<Session> session = sessionOf(handle);
        return session == nullptr ? SP_ERROR_INVALID_INDATA : action(*session);
    });
}

// guardedOr() for a question to a handle; `otherwise` for NULL too.
template <typename Result, typename Object, typename Question>
Result ask(Object* object, Result otherwise, Question question) noexcept {
    if (object == nullptr) {
        return otherwise;
    }
    return guardedOr(otherwise, [&]() -> Result { return question(*object); });
}

// What every ..._add_ref does; its counterpart stands below.
template <typename Object>
sp_error addRef(Object* object) noexcept {
    if (object == nullptr) {
        return SP_ERROR_INVALID_INDATA;
    }
    object->addRef();
    return SP_ERROR_OK;
}

// The handle is not to be used after this, whoever else may hold it.
template <typename Object>
sp_error release(Object* object) noexcept {
    if (object == nullptr) {
        return SP_ERROR_INVALID_INDATA;
    }
    object->release();
    return SP_ERROR_OK;
}

// A reference of the callee's own to a handle that the caller holds. Borrowed handles come in from
// the interface; whatever keeps one begins with this. REQUIRES: it is not NULL.
template <typename Object>
Ref<Object> shared(Object* object) noexcept {
    object->addRef();
    return Ref<Object>::adopt(object);
}

// The query that `make` makes, under way, with a reference for the caller; NULL without a session.
// The session keeps a reference of its own until the query is told, so that one that was released
// at once is told all the same. `make` answers a reference that nobody else has; what it throws is
// a line on standard error, and NULL.
template <typename Object, typename Make>
Object* askSession(const sp_session* handle, Make make) noexcept {
    return guardedOr<Object*>(nullptr, [&]() -> Object* {
        const std::shared_ptr<Session> session = sessionOf(handle);
        if (session == nullptr) {
            return nullptr;
        }
        Ref<Object> query = Ref<Object>::adopt(make());
        session->queries().ask(Ref<Query>::adopt(shared(query.get()).detach()));
        return query.detach();
    });
}

// Copies as much of the text as fits, with its terminator and no half character, and answers the
// text's length in bytes. NULL and 0 ask for the length alone.
int copyText(const std::string& text, char* buffer, std::size_t size) noexcept;

}  // namespace sonolet::service

#endif
