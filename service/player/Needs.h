#ifndef SONOLET_SERVICE_PLAYER_NEEDS_H
#define SONOLET_SERVICE_PLAYER_NEEDS_H

#include <gst/gst.h>

#include <string>

namespace sonolet::service {

// What is missing for sound of this form, in words that help: the element that reads or decodes it
// and the Debian package that has it, where these are known, else the form's media type. Borrows
// the caps, which are of one structure at least. Any thread.
std::string describeNeed(const GstCaps* caps);

}  // namespace sonolet::service

#endif
