#include "api/Api.h"

using namespace sonolet::service;

// A local service has no licences to accept and makes its accounts with its own command, so that
// every step of a sign-up is done as soon as it is asked for.

const char* sp_session_signup_get_unaccepted_licenses(sp_session*) {
    return "";
}

sp_error sp_session_signup_perform_action(sp_session* session, sp_signup_action action) {
    return withSession(session, [&](Session&) {
        const bool known = action >= SP_SIGNUP_ACTION_CONNECT_TO_FACEBOOK &&
                           action <= SP_SIGNUP_ACTION_ACCEPT_LICENSES;
        return known ? SP_ERROR_OK : SP_ERROR_INVALID_INDATA;
    });
}
