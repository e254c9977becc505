#ifndef SONOLET_SERVICE_SESSION_LOGIN_H
#define SONOLET_SERVICE_SESSION_LOGIN_H

#include "accounts/Accounts.h"
#include "session/LateAnswers.h"
#include "session/Playback.h"
#include "session/Queries.h"
#include "source/Source.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sonolet::service {

// Who is logged in, and how one comes to be. The source says who may be, on a worker, since that
// takes as long as a hash is hard or a network slow; the answer comes by logged_in, in its turn. A
// logout, and another login, make an answer that is still under way void.
//
// Threads: the session's owner. Errors: numbers of the interface for what cannot be asked; an
// answer that is a failure of the service is SP_ERROR_OTHER_PERMANENT and a line of the log.
class Login final {
public:
    // Borrows what it is given by reference; the worker must have ended before this goes.
    Login(Callbacks& sessionCallbacks,
          LateAnswers& lateAnswers,
          Worker& sessionWorker,
          Queries& sessionQueries,
          Playback& sessionPlayback,
          Source& musicSource,
          std::shared_ptr<Playlists> sessionLists,
          std::shared_ptr<const Faults> shownFaults);
    ~Login();

    Login(const Login&) = delete;
    Login& operator=(const Login&) = delete;

    // Has the worker check credentials in that file from here on. To be called before the first
    // login.
    void use(const std::string& accounts) { accountsFile = accounts; }

    // With a password, or with a blob that an earlier login has handed out. Remembered or not is
    // decided by the login that succeeds. NULL for what is not given.
    sp_error login(const char* name, const char* password, bool remember, const char* blob);
    // As the user that is remembered; SP_ERROR_NO_CREDENTIALS without one.
    sp_error relogin();
    // logged_out comes in its turn, after the queries under way are told that nobody answers them.
    sp_error logout();
    // The source lets the one who is logged in stay no longer.
    void expel(sp_error why);
    // Once, and only if nobody has asked to log in: has message_to_user say who can, while the
    // first account has its first password.
    void greet();
    // Who is logged in stays so.
    sp_error forgetMe() const;
    // A canonical name.
    std::optional<std::string> rememberedUser() const;
    // Disconnected: somebody is logged in, and the server is away or a fault has taken the
    // connection.
    sp_connectionstate connectionState() const;

    // NULL while nobody is logged in.
    sp_user* user() const { return userHandle.get(); }

    // Everybody else who has an account. NULL for an index outside.
    int friendCount() const { return static_cast<int>(friends.size()); }
    sp_user* friendAt(int index) const;
    // True when there are others than before.
    bool refreshFriends();

    // Of the user, else where this machine is: two letters, or 0 for no country.
    int country() const;
    // What the locale says; 0 when it names no territory.
    static int homeCountry();

    // Lets go of the handles. What is still under way finds nobody: the callbacks are closed
    // before.
    void close();

private:
    using Check = std::function<Admission(Accounts&)>;

    Accounts& accounts() const { return *lists->library()->accounts(); }
    const std::optional<Account>& account() const { return lists->account(); }
    void checkCredentials(Check check);
    void end(unsigned attempt, const Admission& outcome);
    void enter(const Account& found, const std::string& blob);

    // Constant after construction.
    Callbacks& callbacks;
    LateAnswers& late;
    Worker& worker;
    Queries& queries;
    Playback& playback;
    Source& source;
    const std::shared_ptr<Playlists> lists;  // knows who is logged in
    const std::shared_ptr<const Faults> faults;

    std::string accountsFile;
    Ref<sp_user> userHandle;
    std::vector<Ref<sp_user>> friends;
    unsigned lastAttempt = 0;  // an outcome of an earlier one is dropped
    bool pending = false;
    bool hasGreeted = false;
};

}  // namespace sonolet::service

#endif
