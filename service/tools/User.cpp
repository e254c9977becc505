// sonolet-user: the accounts of the local music service.

#include "accounts/Accounts.h"
#include "store/StatePaths.h"
#include "tools/About.h"
#include "tools/Ask.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace sonolet::service;

constexpr int failure = 1;
constexpr int misuse = 2;

constexpr char usage[] =
    "usage: sonolet-user add NAME            make an account\n"
    "       sonolet-user country NAME CODE   say where a user is: two letters, as SE\n"
    "       sonolet-user list                print the names of all accounts\n"
    "       sonolet-user passwd NAME         change a password; forgets stored logins\n"
    "       sonolet-user remove NAME         remove an account and all that it kept\n"
    "       sonolet-user --version\n"
    "\n"
    "The password is asked for on a terminal, and otherwise read as one line of standard input.\n"
    "SONOLET_STATE names the folder that the accounts are kept in.\n";

Secret newPassword(const std::string& name) {
    const Secret password = askPassword("Password for " + name + ": ");
    if (isatty(STDIN_FILENO) != 0 && askPassword("Again: ").value() != password.value()) {
        throw std::runtime_error("the two passwords differ");
    }
    return password;
}

int answer(bool found, const std::string& name) {
    if (!found) {
        std::cerr << "sonolet-user: there is no user " << name << '\n';
        return failure;
    }
    return 0;
}

int run(const std::vector<std::string>& arguments) {
    const std::string command = arguments.empty() ? "" : arguments[0];
    const bool takesName = command == "add" || command == "passwd" || command == "remove";
    const bool takesCountry = command == "country";
    const std::size_t wanted = takesCountry ? 3 : takesName ? 2 : 1;
    if ((!takesName && !takesCountry && command != "list") || arguments.size() != wanted) {
        std::cerr << usage;
        return misuse;
    }
    const StatePaths paths = StatePaths::prepare(defaultSettingsLocation, defaultCacheLocation);
    Accounts accounts(paths.accountsFile());
    if (command == "list") {
        for (const Account& account : accounts.all()) {
            std::cout << account.name << '\n';
        }
        return 0;
    }
    const std::string& name = arguments[1];
    if (command == "add") {
        // Before anything is typed.
        if (accounts.find(Accounts::canonicalName(name))) {
            throw std::runtime_error("the user " + name + " exists already");
        }
        accounts.add(name, newPassword(name));
        return 0;
    }
    if (takesCountry) {
        return answer(accounts.setCountry(name, arguments[2]), name);
    }
    if (command == "passwd") {
        return accounts.find(name) ? answer(accounts.setPassword(name, newPassword(name)), name)
                                   : answer(false, name);
    }
    return answer(accounts.remove(name), name);
}

}  // namespace

int main(int argc, char** argv) {
    if (tellsAbout("sonolet-user", usage, argc, argv)) {
        return 0;
    }
    try {
        const int code = run(std::vector<std::string>(argv + 1, argv + argc));
        finishOutput();
        return code;
    } catch (const std::exception& error) {
        std::cerr << "sonolet-user: " << error.what() << '\n';
        return failure;
    }
}
