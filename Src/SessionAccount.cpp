#include "Session.h"

// Session's functions that ask libspotify for an account, its people and its lists, and do nothing
// else. Those that do more stand in Session.cpp.

#include "Answer.h"

#include <algorithm>
#include <string>
#include <vector>

void Session::login(jspp::function_context& context) const {
    requireInitialized();
    const std::string userName = context.string(0);
    const std::string password = context.string(1);
    const bool rememberMe = context.boolean(2);
    const std::string blob = context.string(3);
    const sp_error error = sp_session_login(session, userName.c_str(), password.c_str(), rememberMe,
                                            blob.empty() ? nullptr : blob.c_str());
    sp_session_preferred_bitrate(session, SP_BITRATE_320k);
    answer(error, context);
}

void Session::relogin(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_relogin(session), context);
}

void Session::forgetMe(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_forget_me(session), context);
}

void Session::rememberedUser(jspp::function_context& context) const {
    requireInitialized();
    std::vector<char> name(256);
    int length = sp_session_remembered_user(session, name.data(), name.size());
    if (length >= 0 && static_cast<std::size_t>(length) >= name.size()) {
        name.resize(static_cast<std::size_t>(length) + 1);
        length = sp_session_remembered_user(session, name.data(), name.size());
    }
    if (length < 0) {
        context.return_null();
        return;
    }
    name.back() = '\0';
    context.return_string(name.data());
}

void Session::connectionstate(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_connectionstate(session), context);
}

void Session::setCacheSize(jspp::function_context& context) const {
    requireInitialized();
    const int megabytes = std::max(0, context.integer(0));
    sp_session_set_cache_size(session, static_cast<std::size_t>(megabytes));
}

void Session::userCountry(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_user_country(session), context);
}

void Session::user(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_user(session), context);
}

void Session::numFriends(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_num_friends(session), context);
}

void Session::friendAt(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_friend(session, context.integer(0)), context);
}

void Session::publishedContainerForUserCreate(jspp::function_context& context) const {
    requireInitialized();
    const std::string userName = context.string(0);
    answer(Created<sp_playlistcontainer>(
               sp_session_publishedcontainer_for_user_create(session, userName.c_str())),
           context);
}

void Session::inboxCreate(jspp::function_context& context) const {
    requireInitialized();
    answer(Created<sp_playlist>(sp_session_inbox_create(session)), context);
}

void Session::starredCreate(jspp::function_context& context) const {
    requireInitialized();
    answer(Created<sp_playlist>(sp_session_starred_create(session)), context);
}

void Session::starredForUserCreate(jspp::function_context& context) const {
    requireInitialized();
    const std::string userName = context.string(0);
    answer(Created<sp_playlist>(sp_session_starred_for_user_create(session, userName.c_str())),
           context);
}

void Session::signupGetUnacceptedLicenses(jspp::function_context& context) const {
    requireInitialized();
    answer(sp_session_signup_get_unaccepted_licenses(session), context);
}

void Session::signupPerformAction(jspp::function_context& context) const {
    requireInitialized();
    const auto action = static_cast<sp_signup_action>(context.integer(0));
    answer(sp_session_signup_perform_action(session, action), context);
}
