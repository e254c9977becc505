#ifndef SONOLET_JSPP_DETAIL_HANDLES_H
#define SONOLET_JSPP_DETAIL_HANDLES_H

#include "jsplugin.h"

namespace jspp::__detail {

// All handles that native code keeps (jspp::object), by document. Script thread.

// Marks, for a collection under way, every script object of the document that a handle refers to.
// Takes no memory: a collection comes when there is little.
void mark_handles(jsplugin_obj* document) noexcept;

// Takes the handles to objects of the document out of the sight of mark_handles(). They refer to
// nothing from here on, also when a later document has that address.
void forget_handles(jsplugin_obj* document) noexcept;

}  // namespace jspp::__detail

#endif
