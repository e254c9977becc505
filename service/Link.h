#ifndef SONOLET_SERVICE_LINK_H
#define SONOLET_SERVICE_LINK_H

#include "Handle.h"
#include "Id.h"

#include "libspotify/api.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace sonolet::service {

class Library;

// What a link says. Only links that mean something exist.
struct LinkTarget {
    sp_linktype type = SP_LINKTYPE_INVALID;
    Id id;             // of tracks, albums and artists
    int offsetMs = 0;  // of tracks; a link tells whole seconds
    std::string text;  // the canonical text, without the offset

    static std::optional<LinkTarget> parse(std::string_view link);
    static LinkTarget track(const Id& id, int offsetMs);

    std::string asString() const;
};

// A link and, once asked for, the handle it leads to, which lives as long as the link.
class Link : public Handle {
public:
    explicit Link(LinkTarget linkTarget) : target(std::move(linkTarget)) {}
    ~Link() override;

    const LinkTarget& where() const { return target; }

    // NULL when the link is of another kind. `library` is the living session's.
    sp_track* track(const std::shared_ptr<Library>& library);
    sp_album* album(const std::shared_ptr<Library>& library);
    sp_artist* artist(const std::shared_ptr<Library>& library);

private:
    // Lets go of what belongs to an earlier session.
    bool turnTo(const std::shared_ptr<Library>& library, sp_linktype type);

    const LinkTarget target;
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
