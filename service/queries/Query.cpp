#include "queries/Query.h"

#include <exception>

namespace sonolet::service {

void Query::finish(sp_error error, Library& library) {
    if (loaded) {
        return;
    }
    loaded = true;
    result = error;
    if (error != SP_ERROR_OK) {
        return;
    }
    try {
        take(library);
    } catch (const std::exception&) {
        // Memory is missing, or a list that was found cannot be read. Who asked is told in any
        // case.
        result = SP_ERROR_OTHER_TRANSIENT;
    }
}

}  // namespace sonolet::service
