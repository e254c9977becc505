#include "session/Login.h"

#include "objects/User.h"

#include <glib.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace sonolet::service {

Login::Login(Callbacks& sessionCallbacks,
             LateAnswers& lateAnswers,
             Worker& sessionWorker,
             Queries& sessionQueries,
             Playback& sessionPlayback,
             Source& musicSource,
             std::shared_ptr<Playlists> sessionLists,
             std::shared_ptr<const Faults> shownFaults)
    : callbacks(sessionCallbacks), late(lateAnswers), worker(sessionWorker),
      queries(sessionQueries), playback(sessionPlayback), source(musicSource),
      lists(std::move(sessionLists)), faults(std::move(shownFaults)) {}

Login::~Login() = default;

sp_error Login::login(const char* name, const char* password, bool remember, const char* blob) {
    const bool hasBlob = blob != nullptr && *blob != '\0';
    if (name == nullptr || *name == '\0' || (password == nullptr && !hasBlob)) {
        return SP_ERROR_INVALID_INDATA;
    }
    const std::string wanted = name;
    const Secret secret(hasBlob ? blob : password);
    checkCredentials([this, wanted, secret, hasBlob, remember](Accounts& store) {
        return source.admit(store, wanted, secret, hasBlob, remember);
    });
    return SP_ERROR_OK;
}

sp_error Login::relogin() {
    if (!source.remembered(accounts())) {
        return SP_ERROR_NO_CREDENTIALS;
    }
    checkCredentials([this](Accounts& store) { return source.admitRemembered(store); });
    return SP_ERROR_OK;
}

// The worker opens a connection of its own.
void Login::checkCredentials(Check check) {
    const unsigned attempt = ++lastAttempt;
    pending = true;
    if (const std::optional<sp_error> refused = faults->login()) {
        late.answer([this, attempt, refused] { end(attempt, {std::nullopt, *refused, {}}); });
        return;
    }
    worker.post([this, attempt, file = accountsFile, check = std::move(check)] {
        Admission outcome;
        try {
            Accounts store(file);
            outcome = check(store);
        } catch (const std::exception& failure) {
            callbacks.log(std::string("Login failed: ") + failure.what());
            outcome = {std::nullopt, SP_ERROR_OTHER_PERMANENT, {}};
        }
        late.answer([this, attempt, outcome] { end(attempt, outcome); });
    });
}

void Login::end(unsigned attempt, const Admission& outcome) {
    if (attempt != lastAttempt) {
        return;
    }
    pending = false;
    if (outcome.account) {
        enter(*outcome.account, outcome.blob);
    } else {
        callbacks.raise(&sp_session_callbacks::logged_in, outcome.error);
    }
}

void Login::enter(const Account& found, const std::string& blob) {
    if (account() && account()->id != found.id) {
        playback.stop();
        userHandle = {};
        const std::vector<Ref<Query>> cancelled = queries.cancel();
        lists->logOut();
        queries.tell(cancelled);
        callbacks.raise(&sp_session_callbacks::logged_out);
        if (callbacks.isSilent()) {
            return;
        }
    }
    userHandle = lists->library()->user(found.name);
    lists->logIn(found);
    source.enter(found);
    refreshFriends();
    callbacks.log("Logged in as " + found.name);
    callbacks.raise(&sp_session_callbacks::logged_in, SP_ERROR_OK);
    if (!blob.empty()) {
        callbacks.raise(&sp_session_callbacks::credentials_blob_updated, blob.c_str());
    }
    callbacks.raise(&sp_session_callbacks::userinfo_updated);
    callbacks.raise(&sp_session_callbacks::metadata_updated);
}

sp_error Login::logout() {
    if (!account() && !pending) {
        return SP_ERROR_OK;
    }
    ++lastAttempt;
    pending = false;
    playback.stop();
    userHandle = {};
    friends.clear();
    source.leave();
    lists->logOut();
    callbacks.post([this, cancelled = queries.cancel()] {
        queries.tell(cancelled);
        callbacks.raise(&sp_session_callbacks::logged_out);
    });
    return SP_ERROR_OK;
}

void Login::expel(sp_error why) {
    if (account()) {
        callbacks.log(account()->name + " is logged in no more");
        static_cast<void>(logout());
        callbacks.raise(&sp_session_callbacks::connection_error, why);
    }
}

void Login::greet() {
    if (hasGreeted || lastAttempt != 0 || source.firstAccount() != Accounts::First::listener) {
        return;
    }
    hasGreeted = true;
    worker.post([this, file = accountsFile] {
        callbacks.orLog("Nobody is greeted", [&] {
            if (!Accounts(file).checkPassword("listener", Secret("listener"))) {
                return;
            }
            late.answer([this] {
                if (lastAttempt == 0) {
                    callbacks.raise(&sp_session_callbacks::message_to_user,
                                    "This is a demo of the service: sign in as listener, with the "
                                    "password listener.");
                }
            });
        });
    });
}

sp_error Login::forgetMe() const {
    source.forget(accounts());
    return SP_ERROR_OK;
}

std::optional<std::string> Login::rememberedUser() const {
    return source.remembered(accounts());
}

sp_connectionstate Login::connectionState() const {
    if (!account()) {
        return SP_CONNECTION_STATE_LOGGED_OUT;
    }
    const bool away = faults->isOffline() || source.isAway();
    return away ? SP_CONNECTION_STATE_DISCONNECTED : SP_CONNECTION_STATE_LOGGED_IN;
}

bool Login::refreshFriends() {
    std::vector<Ref<sp_user>> others;
    if (account()) {
        for (const Account& other : accounts().all()) {
            if (other.id != account()->id) {
                others.push_back(lists->library()->user(other.name));
            }
        }
    }
    // A user whom someone holds has one handle.
    const bool same = std::equal(others.begin(), others.end(), friends.begin(), friends.end(),
                                 [](const Ref<sp_user>& left, const Ref<sp_user>& right) {
                                     return left.get() == right.get();
                                 });
    friends.swap(others);
    return !same;
}

sp_user* Login::friendAt(int index) const {
    return index < 0 || index >= friendCount() ? nullptr : friends[index].get();
}

int Login::country() const {
    if (account() && account()->country.size() == 2) {
        return account()->country[0] << 8 | account()->country[1];
    }
    return homeCountry();
}

int Login::homeCountry() {
    // As the C library reads it: the first of these that is set decides.
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* locale = g_getenv(name);
        if (locale == nullptr || *locale == '\0') {
            continue;
        }
        const char* territory = std::strchr(locale, '_');
        const bool known = territory != nullptr && g_ascii_isupper(territory[1]) &&
                           g_ascii_isupper(territory[2]) && !g_ascii_isalnum(territory[3]);
        return known ? territory[1] << 8 | territory[2] : 0;
    }
    return 0;
}

void Login::close() {
    userHandle = {};
    friends.clear();
}

}  // namespace sonolet::service
