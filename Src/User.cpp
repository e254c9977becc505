#include "User.h"

User::User(sp_session* librarySession,
           sp_user* user,
           const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Object(librarySession, libraryShare), handle(user) {
    static const function_row members[] = {
        {"picture", &User::picture, ""},
        {"displayName", &User::displayName, ""},
        {"canonicalName", &User::canonicalName, ""},
        {"isLoaded", &User::isLoaded, ""},
        {"relationType", &User::relationType, ""},
        {"fullName", &User::fullName, ""},
    };
    static const jspp::name_table& names = *new jspp::name_table(listener_functions(), members);
    _class(names);
}

void User::picture(jspp::function_context& context) const {
    context.return_string(sp_user_picture(handle.get()));
}

void User::displayName(jspp::function_context& context) const {
    context.return_string(sp_user_display_name(handle.get()));
}

void User::canonicalName(jspp::function_context& context) const {
    context.return_string(sp_user_canonical_name(handle.get()));
}

void User::isLoaded(jspp::function_context& context) const {
    context.return_boolean(sp_user_is_loaded(handle.get()));
}

void User::relationType(jspp::function_context& context) const {
    context.return_number(sp_user_relation_type(session, handle.get()));
}

void User::fullName(jspp::function_context& context) const {
    context.return_string(sp_user_full_name(handle.get()));
}
