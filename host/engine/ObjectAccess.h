#ifndef SONOLET_HOST_ENGINE_OBJECTACCESS_H
#define SONOLET_HOST_ENGINE_OBJECTACCESS_H

#include <JavaScriptCore/JavaScript.h>

class ObjectRecord;

// What script does to a native object, on its way to the plug-in.
//
// Threads: the script thread. REQUIRES: the record is native, and has the callback that is asked.
class ObjectAccess {
public:
    // Null when there is no such property, and when `exception` is set.
    virtual JSValueRef read(ObjectRecord& record, JSStringRef name, JSValueRef* exception) = 0;

    // Answers false when the property is the page's own.
    virtual bool
    write(ObjectRecord& record, JSStringRef name, JSValueRef value, JSValueRef* exception) = 0;

    virtual JSValueRef call(ObjectRecord& function,
                            JSObjectRef thisObject,
                            size_t argc,
                            const JSValueRef argv[],
                            JSValueRef* exception) = 0;

protected:
    ~ObjectAccess() = default;
};

#endif
