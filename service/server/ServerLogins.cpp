#include "accounts/Password.h"
#include "server/ServerSource.h"

// Who is let in by a server, and how that is kept; who else uses it.

namespace sonolet::service {

namespace {

constexpr char rememberedSetting[] = "remembered";
constexpr std::size_t blobBytes = 32;
constexpr std::size_t mostUsers = 1000;

// What is kept of a login, or handed out as a blob: name, salt and token, a line each.
std::string written(const ServerLogin& login) {
    return login.token.empty() ? std::string()
                               : login.user + '\n' + login.salt + '\n' + login.token;
}

std::optional<ServerLogin> readLogin(const std::string& text) {
    const std::size_t first = text.find('\n');
    const std::size_t second = first == std::string::npos ? first : text.find('\n', first + 1);
    if (second == std::string::npos) {
        return std::nullopt;
    }
    ServerLogin login;
    login.user = text.substr(0, first);
    login.salt = text.substr(first + 1, second - first - 1);
    login.token = text.substr(second + 1);
    return login;
}

}  // namespace

// The login with which the server lets them in. Throws ServerError when it does not.
ServerLogin ServerSource::proven(const std::string& name, const std::string& password) {
    ServerLogin login = ServerLogin::withToken(name, password);
    try {
        client.callAs(login, "ping");
        return login;
    } catch (const ServerError& error) {
        // What servers say that know no tokens, or not for this user.
        constexpr int missing = 10;
        constexpr int noToken = 41;
        constexpr int unsupported = 42;
        const int code = error.code();
        if (code != missing && code != noToken && code != unsupported) {
            throw;
        }
    }
    if (!client.address().isPrivate && !options.plainAllowed) {
        throw ServerError(SP_ERROR_ACCESS_DENIED,
                          "this server wants the password itself, which everybody between here and "
                          "there could read: use https, or set SONOLET_SERVER_PLAIN=1",
                          false);
    }
    login.token.clear();
    login.salt.clear();
    login.password = password;
    client.callAs(login, "ping");
    return login;
}

Admission ServerSource::let(Accounts& store, const ServerLogin& login, bool remember) {
    Admission admission;
    admission.account = store.admit(login.user);
    admission.blob = written(login);
    const std::lock_guard<std::mutex> lock(mutex);
    logins[admission.account->name] = login;
    if (admission.blob.empty()) {
        // Good in this process alone: nothing but the password would do, which is not kept.
        admission.blob = randomText(blobBytes);
        blobs[admission.blob] = login;
    }
    if (remember) {
        rememberedHere = admission.account->name;
    }
    return admission;
}

Admission ServerSource::admit(
    Accounts& store, const std::string& name, const Secret& secret, bool isBlob, bool remember) {
    ServerStore links(storeFile);
    try {
        std::optional<ServerLogin> login;
        if (isBlob) {
            login = loginOfBlob(store, name, secret.value());
            if (login) {
                client.callAs(*login, "ping");
            }
        } else {
            login = proven(name, secret.value());
        }
        if (!login) {
            return {};
        }
        if (remember) {
            links.setSetting(rememberedSetting, written(*login));
            if (login->token.empty()) {
                events.log("This server knows no login tokens: " + name +
                           " is remembered until the program ends");
            }
        }
        return let(store, *login, remember);
    } catch (const ServerError& error) {
        events.log(std::string("Login failed: ") + error.what());
        const auto known = readLogin(links.setting(rememberedSetting).value_or(""));
        const bool isKnown = error.isLost() && !isBlob && known && known->user == name &&
                             ServerLogin::tokenOf(secret.value(), known->salt) == known->token;
        if (!isKnown) {
            return {std::nullopt, error.number(), {}};
        }
        events.log("The server is away; " + name + " is known here");
        Admission admission = let(store, *known, remember);
        failed(error);
        return admission;
    }
}

Admission ServerSource::admitRemembered(Accounts& store) {
    ServerStore links(storeFile);
    std::optional<ServerLogin> login = readLogin(links.setting(rememberedSetting).value_or(""));
    if (!login) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!rememberedHere) {
            return {std::nullopt, SP_ERROR_NO_CREDENTIALS, {}};
        }
        login = logins.at(*rememberedHere);
    }
    std::optional<ServerError> lost;
    try {
        client.callAs(*login, "ping");
    } catch (const ServerError& error) {
        events.log(std::string("Login failed: ") + error.what());
        if (!error.isLost()) {
            return {std::nullopt, error.number(), {}};
        }
        lost = error;  // who is remembered is known here
    }
    Admission admission = let(store, *login, false);
    admission.blob.clear();
    if (lost) {
        failed(*lost);
    }
    return admission;
}

std::optional<ServerLogin>
ServerSource::loginOfBlob(Accounts& store, const std::string& name, const std::string& blob) {
    const std::optional<Account> account = store.find(name);
    std::optional<ServerLogin> login = readLogin(blob);
    if (login && account && normalised(login->user) == account->name) {
        return login;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    const auto known = blobs.find(blob);
    return known == blobs.end() || !account || known->second.user != account->displayName
               ? std::nullopt
               : std::optional<ServerLogin>(known->second);
}

std::optional<std::string> ServerSource::remembered(Accounts& store) {
    ServerStore links(storeFile);
    if (const auto login = readLogin(links.setting(rememberedSetting).value_or(""))) {
        const std::optional<Account> account = store.find(login->user);
        return account ? account->name : login->user;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    return rememberedHere;
}

// Who else uses the server is a friend here. Most tell that to administrators alone; then friends
// are those whose playlists are shown, and those who have logged in here.
void ServerSource::meetUsers() {
    try {
        std::vector<std::string> names;
        for (const Reply& each : client.callAside("getUsers")["users"]["user"].list()) {
            const std::string name = each["username"].text();
            if (!Accounts::canBeName(name)) {
                continue;
            }
            if (names.size() == mostUsers) {
                events.log("The server has more than " + std::to_string(mostUsers) +
                           " users; the others are no friends here");
                break;
            }
            names.push_back(name);
        }
        Kept files;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            files = kept;
        }
        if (files.onDisk && !names.empty()) {
            Accounts(files.accounts, Accounts::First::nobody).admitAll(names);
        }
    } catch (const ServerError&) {
        // It does not say, or not now.
    } catch (const std::exception& error) {
        events.log(std::string("The server's users are not known: ") + error.what());
    }
}

void ServerSource::forget(Accounts&) {
    ServerStore links(storeFile);
    links.setSetting(rememberedSetting, "");
    const std::lock_guard<std::mutex> lock(mutex);
    rememberedHere.reset();
}

}  // namespace sonolet::service
