#ifndef SONOLET_SERVICE_TOOLS_VISIT_H
#define SONOLET_SERVICE_TOOLS_VISIT_H

#include "catalogue/Catalogue.h"
#include "source/Source.h"
#include "store/StatePaths.h"

#include <memory>
#include <optional>
#include <string>

namespace sonolet::service {

// A program's visit to the music server that SONOLET_SERVER names: logged in, without a session.
//
// Threads: one. Errors: std::runtime_error when nobody is let in, and as the source's.
class Visit final {
public:
    // As that user, whose password is asked for; else as the one who is remembered, else as
    // "listener" with the password "listener".
    Visit(const StatePaths& paths, const std::optional<std::string>& user);
    ~Visit();

    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    const Kept& files() const { return kept; }
    Source& source() const { return *from; }
    const Account& account() const { return *entered; }

    // Has the catalogue know everything the server has; tells standard error how far it is.
    void learnEverything();

    // Has the lists here and there be the same. While the server is away, standard error is told
    // that they will be later.
    void agreeOnLists();

private:
    std::unique_ptr<Source> from;
    Kept kept;
    std::optional<Account> entered;
};

}  // namespace sonolet::service

#endif
