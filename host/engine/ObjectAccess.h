#ifndef SONOLET_HOST_ENGINE_OBJECTACCESS_H
#define SONOLET_HOST_ENGINE_OBJECTACCESS_H

#include <JavaScriptCore/JavaScript.h>

#include <cstdint>
#include <string>

class ObjectRecord;

// What a read came to.
struct Reading {
    // As fronts.js knows them; 0: the plug-in has no such name.
    enum Answer : std::int32_t {
        isFound = 1,
        isNumber = 2,  // else `value` is it
        isKept = 4,    // it need not be asked for again
        isPart = 8,    // a function that goes together with the object
    };
    std::int32_t answer = 0;
    double number = 0;           // most answers are: a script value of it would cost a call
    JSValueRef value = nullptr;  // null: undefined
};

// What script does to a native object, on its way to the plug-in.
//
// Threads: the script thread. REQUIRES: the record is native, and has the callback that is asked.
// Errors: `exception` is set.
class ObjectAccess {
public:
    virtual Reading read(ObjectRecord& record, const std::string& name, JSValueRef* exception) = 0;

    // Answers false when the property is the page's own.
    virtual bool write(ObjectRecord& record,
                       const std::string& name,
                       JSValueRef value,
                       JSValueRef* exception) = 0;

    virtual JSValueRef call(ObjectRecord& function,
                            JSObjectRef thisObject,
                            size_t argc,
                            const JSValueRef argv[],
                            JSValueRef* exception) = 0;

    // Script no longer has the function as an answer that is kept.
    virtual void drop(ObjectRecord& function) = 0;

protected:
    ~ObjectAccess() = default;
};

#endif
