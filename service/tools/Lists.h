#ifndef SONOLET_SERVICE_TOOLS_LISTS_H
#define SONOLET_SERVICE_TOOLS_LISTS_H

#include "accounts/Accounts.h"
#include "accounts/ListStore.h"
#include "catalogue/Catalogue.h"
#include "source/Source.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sonolet::service {

std::string quoted(const std::string& text);

// A number that is all of the text, digits alone; nothing for any other text.
std::optional<std::size_t> number(const std::string& text);

// The canonical link of a playlist, or of a user's starred list.
std::string linkOf(const ListRow& list);

// One user's lists, and what the arguments of a command line mean among them.
//
// Threads: one. Errors: std::runtime_error that says in words for the terminal which name leads
// nowhere or to several; DatabaseError.
struct Lists {
    // Has the catalogue know the tracks of that title.
    using Learn = std::function<void(const std::string& title)>;

    // Opens accounts and catalogue, also beside a session that runs, which sees each change when it
    // looks for changes next. `learnTitle` is asked about titles that the catalogue does not have.
    explicit Lists(const Kept& files, Learn learnTitle = {});

    // To be called first.
    void use(const std::string& userName);

    // An exact name among the user's lists, a link, "starred" or "inbox".
    ListRow list(const std::string& name);
    // One that the user may change.
    ListRow changeable(const std::string& name);
    // Both ends of the user's first folder of that name, or nothing.
    std::vector<std::int64_t> endsOf(const std::string& name);
    // An exact title, or a link.
    Id track(const std::string& name);

    // Throws that text where the music is a server's.
    void requireFolder(const char* otherwise) const;

    // From 0 to `most`.
    std::size_t position(const std::string& text, std::size_t most) const;
    // The place of an entry.
    std::size_t placeOf(const std::string& text,
                        const ListRow& in,
                        const std::vector<ListEntry>& entries) const;

    Accounts accounts;
    ListStore store;
    const std::string catalogueFile;
    Catalogue catalogue;
    Account user;
    ListRow container;

private:
    std::vector<Id> tracksCalled(const std::string& title);

    const Learn learn;
    Database titles;
    Statement findTitle;
};

}  // namespace sonolet::service

#endif
