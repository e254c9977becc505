#ifndef SONOLET_ENUMERATIONS_H
#define SONOLET_ENUMERATIONS_H

#include "jspp/interface.h"

#include <initializer_list>

// The named constants that script compares libspotify's numbers with: one object for each group,
// nothing but numbers in it, and the root's attribute of the group answers it. Constants are named
// as libspotify's, and the compiler takes their values from there. Script thread.

// The plug-in's own error codes.
enum SpPluginError {
    SP_PLUGIN_ERROR_OK = 0,
    SP_PLUGIN_ERROR_GENERAL = 1,
    SP_PLUGIN_ERROR_NO_AUDIO = 2,
};

// Base of the groups: registers each constant under its name. A new group is a class here, its
// constants in Enumerations.cpp, and an attribute of Spotify.
class Enumeration : public jspp::interface {
public:
    ~Enumeration() override = default;

protected:
    struct Constant {
        const char* name;
        int value;
    };

    // The names are literals, and not one of them stands twice: that throws while the plug-in is
    // loaded.
    Enumeration(std::initializer_list<Constant> constants);
};

// Which page of the sign-up flow to show: the first argument of both "ShowSignup..." events.
class SpSignupPageEnums final : public Enumeration {
public:
    SpSignupPageEnums();
};

// Bits: what the user's account may be connected with, the third argument of "ShowSignupPage".
class SpSignupFeatureEnums final : public Enumeration {
public:
    SpSignupFeatureEnums();
};

// What the user did on such a page: the argument of Session.signupPerformAction.
class SpSignupActionEnums final : public Enumeration {
public:
    SpSignupActionEnums();
};

// What functions and events call an error: 0 is none, and there is no constant of value 4.
class SpErrorEnums final : public Enumeration {
public:
    SpErrorEnums();
};

// Entries of a container, as playlistType answers them: a folder has a start and an end.
class SpPlaylistTypeEnums final : public Enumeration {
public:
    SpPlaylistTypeEnums();
};

// For completeness: Track.getAvailability narrows it to a boolean.
class SpTrackAvailabilityEnums final : public Enumeration {
public:
    SpTrackAvailabilityEnums();
};

// What Artistbrowse.create is asked to leave out.
class SpArtistbrowseTypeEnums final : public Enumeration {
public:
    SpArtistbrowseTypeEnums();
};

// What Album.albumType answers.
class SpAlbumTypeEnums final : public Enumeration {
public:
    SpAlbumTypeEnums();
};

// What SpImage.format answers; the unknown format, while a picture loads, is -1.
class SpImageFormatEnums final : public Enumeration {
public:
    SpImageFormatEnums();
};

// What User.relationType answers.
class SpRelationTypeEnums final : public Enumeration {
public:
    SpRelationTypeEnums();
};

// The first argument of Toplistbrowse.create.
class SpToplistTypeEnums final : public Enumeration {
public:
    SpToplistTypeEnums();
};

// Its second argument, which may be a country's number, too.
class SpToplistRegionEnums final : public Enumeration {
public:
    SpToplistRegionEnums();
};

// Deliberately without constants.
class SpSearchTypeEnums final : public Enumeration {
public:
    SpSearchTypeEnums();
};

// The plug-in's own, above.
class SpPluginErrorEnums final : public Enumeration {
public:
    SpPluginErrorEnums();
};

#endif
