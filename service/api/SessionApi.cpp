#include "api/Api.h"
#include "objects/User.h"

#include <mutex>
#include <utility>

namespace sonolet::service {

namespace {

// The one session. Never freed: a program may release its session while the process exits.
struct Current {
    std::mutex mutex;
    std::shared_ptr<sp_session> session;
};

Current& current() {
    static Current& value = *new Current;
    return value;
}

}  // namespace

std::shared_ptr<Session> sessionOf(const sp_session* handle) noexcept {
    Current& place = current();
    const std::lock_guard<std::mutex> lock(place.mutex);
    return handle != nullptr && place.session.get() == handle ? place.session : nullptr;
}

std::shared_ptr<Session> currentSession() noexcept {
    Current& place = current();
    const std::lock_guard<std::mutex> lock(place.mutex);
    return place.session;
}

std::shared_ptr<Library> currentLibrary() noexcept {
    const std::shared_ptr<Session> session = currentSession();
    return session == nullptr ? nullptr : session->library();
}

namespace {

sp_error createSession(const sp_session_config* config, sp_session** session) {
    if (config == nullptr || session == nullptr) {
        return SP_ERROR_INVALID_INDATA;
    }
    *session = nullptr;
    Current& place = current();
    {
        const std::lock_guard<std::mutex> lock(place.mutex);
        if (place.session != nullptr) {
            throw ServiceError(SP_ERROR_API_INITIALIZATION_FAILED,
                               "this process has a session already");
        }
    }
    const auto created = std::make_shared<sp_session>(*config);
    {
        const std::lock_guard<std::mutex> lock(place.mutex);
        place.session = created;
    }
    *session = created.get();
    try {
        created->start();
    } catch (...) {
        sp_session_release(std::exchange(*session, nullptr));
        throw;
    }
    return SP_ERROR_OK;
}

}  // namespace

}  // namespace sonolet::service

using namespace sonolet::service;

sp_error sp_session_create(const sp_session_config* config, sp_session** session) {
    return guarded([&] { return createSession(config, session); });
}

sp_error sp_session_release(sp_session* session) {
    return withSession(session, [](Session& living) {
        // A callback under way may still ask the session something.
        living.close();
        Current& place = current();
        const std::lock_guard<std::mutex> lock(place.mutex);
        place.session.reset();
        return SP_ERROR_OK;
    });
}

sp_error sp_session_login(sp_session* session,
                          const char* username,
                          const char* password,
                          bool remember_me,  // NOLINT(readability-identifier-naming): as declared
                          const char* blob) {
    return withSession(session, [&](Session& living) {
        return living.login().login(username, password, remember_me, blob);
    });
}

sp_error sp_session_relogin(sp_session* session) {
    return withSession(session, [](Session& living) { return living.login().relogin(); });
}

int sp_session_remembered_user(sp_session* session, char* buffer, size_t size) {
    return guardedOr(-1, [&] {
        const std::shared_ptr<Session> living = sessionOf(session);
        const auto name = living == nullptr ? std::nullopt : living->login().rememberedUser();
        return name ? copyText(*name, buffer, size) : -1;
    });
}

sp_error sp_session_forget_me(sp_session* session) {
    return withSession(session, [](Session& living) { return living.login().forgetMe(); });
}

sp_user* sp_session_user(sp_session* session) {
    const std::shared_ptr<Session> living = sessionOf(session);
    return living == nullptr ? nullptr : living->login().user();
}

sp_error sp_session_logout(sp_session* session) {
    return withSession(session, [](Session& living) { return living.login().logout(); });
}

sp_connectionstate sp_session_connectionstate(sp_session* session) {
    const std::shared_ptr<Session> living = sessionOf(session);
    return living == nullptr ? SP_CONNECTION_STATE_UNDEFINED : living->login().connectionState();
}

sp_error sp_session_set_cache_size(sp_session* session, size_t megabytes) {
    return withSession(session, [&](Session& living) { return living.setCacheSize(megabytes); });
}

// NOLINTNEXTLINE(readability-identifier-naming): as declared
sp_error sp_session_process_events(sp_session* session, int* next_timeout) {
    return withSession(session,
                       [&](Session& living) { return living.processEvents(next_timeout); });
}

sp_error sp_session_preferred_bitrate(sp_session* session, sp_bitrate bitrate) {
    // What can be played as it is, is; the wish is for what has to be made.
    return withSession(session, [&](Session& living) {
        switch (bitrate) {
        case SP_BITRATE_96k:
            living.setBitrate(96);
            return SP_ERROR_OK;
        case SP_BITRATE_160k:
            living.setBitrate(160);
            return SP_ERROR_OK;
        case SP_BITRATE_320k:
            living.setBitrate(320);
            return SP_ERROR_OK;
        }
        return SP_ERROR_INVALID_INDATA;
    });
}

int sp_session_user_country(sp_session* session) {
    const std::shared_ptr<Session> living = sessionOf(session);
    return living == nullptr ? 0 : living->login().country();
}

int sp_session_num_friends(sp_session* session) {
    const std::shared_ptr<Session> living = sessionOf(session);
    return living == nullptr ? 0 : living->login().friendCount();
}

sp_user* sp_session_friend(sp_session* session, int index) {
    return guardedOr<sp_user*>(nullptr, [&]() -> sp_user* {
        const std::shared_ptr<Session> living = sessionOf(session);
        return living == nullptr ? nullptr : living->login().friendAt(index);
    });
}

void* sp_session_userdata(sp_session* session) {
    const std::shared_ptr<Session> living = sessionOf(session);
    return living == nullptr ? nullptr : living->userdata();
}
