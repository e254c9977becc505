#include "api/Api.h"
#include "objects/User.h"

using namespace sonolet::service;

const char* sp_user_canonical_name(sp_user* user) {
    return ask(user, "", [](User& asked) { return asked.canonicalName().c_str(); });
}

const char* sp_user_display_name(sp_user* user) {
    return ask(user, "", [](User& asked) { return asked.displayName().c_str(); });
}

const char* sp_user_full_name(sp_user* user) {
    return ask(user, "", [](User& asked) { return asked.fullName().c_str(); });
}

const char* sp_user_picture(sp_user*) {
    // Accounts of this service have no pictures.
    return "";
}

bool sp_user_is_loaded(sp_user* user) {
    return ask(user, false, [](User& asked) { return asked.isLoaded(); });
}

sp_relation_type sp_user_relation_type(sp_session* session, sp_user* user) {
    return ask(user, SP_RELATION_TYPE_UNKNOWN, [&](User& asked) {
        const std::shared_ptr<Session> living = sessionOf(session);
        if (living == nullptr || living->login().user() == nullptr || !asked.isLoaded()) {
            return SP_RELATION_TYPE_UNKNOWN;
        }
        // The users of one service know each other; nobody is a friend of his own.
        return living->login().user() == user ? SP_RELATION_TYPE_NONE
                                              : SP_RELATION_TYPE_BIDIRECTIONAL;
    });
}

sp_error sp_user_add_ref(sp_user* user) {
    return addRef(user);
}

sp_error sp_user_release(sp_user* user) {
    return release(user);
}
