#ifndef SONOLET_WRAPPER_H
#define SONOLET_WRAPPER_H

#include "Answer.h"
#include "Handle.h"
#include "Object.h"

#include <tuple>
#include <type_traits>

// A wrapper of one kind of libspotify handle: owns a reference, and makes a script function of any
// call of libspotify that is about the handle.
//
// Such a member is its row in the class's table and nothing else:
//     {"artist", &Track::reads<&sp_track_artist>, "n"}
// The call's signature tells what it is given: the handle, the session, and script's arguments for
// the numbers, enumerations and flags in it. Errors: first those of the arguments, then that there
// is no handle. Script thread.
// A parameter that is neither a number, a flag nor the handle or session does not compile, and
// neither does a result that no answer() takes.
template <class Kind>
class Wrapper : public Object {
public:
    // Borrowed. Throws when the wrapper has none.
    Kind* getHandle() const { return handle.get(); }

protected:
    // A constructor object.
    Wrapper() = default;
    // Takes a reference of its own to `borrowed`, which may be null.
    Wrapper(sp_session* librarySession,
            Kind* borrowed,
            const orvo::shared_ptr<LibWrapper>& libraryShare)
        : Object(librarySession, libraryShare), handle(borrowed) {}

    // Answers what the call does.
    template <auto Call>
    void reads(jspp::function_context& context) const {
        answer(called(Call, context), context);
    }

    // Answers nothing: what comes of the call shows elsewhere.
    template <auto Call>
    void does(jspp::function_context& context) const {
        called(Call, context);
    }

    void releaseHandle() noexcept override { handle.release(); }

    // Given back by releaseHandle(), or with the wrapper.
    Handle<Kind> handle;

private:
    // Script's arguments first, from left to right, then what the wrapper has.
    template <class Result, class... Parameters>
    Result called(Result (*call)(Parameters...), const jspp::function_context& context) const {
        int next = 0;
        // Braces keep the order.
        const std::tuple<Parameters...> fromScript{argument<Parameters>(context, next)...};
        return std::apply([&](auto... values) { return call(own(values)...); }, fromScript);
    }

    template <class Parameter>
    static Parameter argument(const jspp::function_context& context, int& next) {
        if constexpr (std::is_pointer_v<Parameter>) {
            return nullptr;  // the wrapper's
        } else if constexpr (std::is_same_v<Parameter, bool>) {
            return context.boolean(next++);
        } else {
            return static_cast<Parameter>(context.integer(next++));
        }
    }

    template <class Value>
    Value own(Value value) const {
        if constexpr (std::is_same_v<Value, sp_session*>) {
            return session;
        } else if constexpr (std::is_pointer_v<Value>) {
            return handle.get();
        } else {
            return value;
        }
    }
};

#endif
