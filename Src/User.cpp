#include "User.h"

User::User(sp_session* librarySession,
           sp_user* user,
           const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, user, libraryShare) {
    static const function_row members[] = {
        {"picture", &User::reads<&sp_user_picture>, ""},
        {"displayName", &User::reads<&sp_user_display_name>, ""},
        {"canonicalName", &User::reads<&sp_user_canonical_name>, ""},
        {"isLoaded", &User::reads<&sp_user_is_loaded>, ""},
        {"relationType", &User::reads<&sp_user_relation_type>, ""},
        {"fullName", &User::reads<&sp_user_full_name>, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}
