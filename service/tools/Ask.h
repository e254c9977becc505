#ifndef SONOLET_SERVICE_TOOLS_ASK_H
#define SONOLET_SERVICE_TOOLS_ASK_H

#include "accounts/Password.h"

#include <string>

namespace sonolet::service {

// Asked for on a terminal, where it is not shown; otherwise a line of standard input. Throws
// std::runtime_error when there is none.
Secret askPassword(const std::string& prompt);

}  // namespace sonolet::service

#endif
