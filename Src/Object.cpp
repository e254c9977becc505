#include "Object.h"

Object::Object() : Object(nullptr, {}) {}

Object::Object(sp_session* librarySession, const orvo::shared_ptr<LibWrapper>& libraryShare)
    : session(librarySession), library(libraryShare) {
    _register();
}

void Object::release(jspp::function_context&) const {}

void Object::clear() {
    releaseHandle();
    if (losesNames) {
        _class(listener_functions());
    }
}
