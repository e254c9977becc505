#include "LibWrapper.h"

#include <stdexcept>

LibWrapper::LibWrapper(const sp_session_config& config) {
    if (sp_session_create(&config, &session) != SP_ERROR_OK) {
        throw std::runtime_error("Failed to initialize libspotify");
    }
}

LibWrapper::~LibWrapper() {
    sp_session_logout(session);
    sp_session_release(session);
}
