#ifndef SONOLET_SERVICE_OBJECTS_LINK_H
#define SONOLET_SERVICE_OBJECTS_LINK_H

#include "objects/Handle.h"
#include "store/LinkTarget.h"

#include "libspotify/api.h"

#include <memory>
#include <string>
#include <utility>

namespace sonolet::service {

class Library;

// A link and, once asked for, the handle it leads to, which lives as long as the link. Links
// outlive sessions: asked in a later one, they lead into that one's library.
//
// Threads: to() is for any, as is counting; the rest is for the thread that uses the library.
class Link : public Handle {
public:
    // The same target has the same link while anyone holds it: a program that never releases its
    // links holds one of each.
    static Ref<sp_link> to(LinkTarget target);

    // For to() alone.
    Link(LinkTarget linkTarget, std::string shelfKey)
        : target(std::move(linkTarget)), key(std::move(shelfKey)) {}
    ~Link() override;

    const LinkTarget& where() const { return target; }

    // NULL when the link is of another kind. `library` is the living session's, or NULL, for which
    // there is no handle. Borrowed: as long as the link, or until it is asked with another library.
    sp_track* track(const std::shared_ptr<Library>& library);
    sp_album* album(const std::shared_ptr<Library>& library);
    sp_artist* artist(const std::shared_ptr<Library>& library);

private:
    // Lets go of what belongs to an earlier session.
    bool turnTo(const std::shared_ptr<Library>& library, sp_linktype type);

    const LinkTarget target;
    const std::string key;
    std::shared_ptr<Library> resolvedIn;
    Ref<sp_track> trackHandle;
    Ref<sp_album> albumHandle;
    Ref<sp_artist> artistHandle;
};

}  // namespace sonolet::service

// The interface's name for it.
struct sp_link final : sonolet::service::Link {  // NOLINT(readability-identifier-naming)
    using Link::Link;
};

#endif
