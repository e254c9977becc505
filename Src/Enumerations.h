#ifndef SONOLET_ENUMERATIONS_H
#define SONOLET_ENUMERATIONS_H

#include "jspp/interface.h"

#include <initializer_list>

// The named constants that script compares libspotify's numbers with: one object for each group,
// nothing but numbers in it.

// The plug-in's own error codes.
enum SpPluginError {
    SP_PLUGIN_ERROR_OK = 0,
    SP_PLUGIN_ERROR_GENERAL = 1,
    SP_PLUGIN_ERROR_NO_AUDIO = 2,
};

class Enumeration : public jspp::interface {
public:
    ~Enumeration() override = default;

protected:
    struct Constant {
        const char* name;
        int value;
    };

    Enumeration(std::initializer_list<Constant> constants);
};

class SpSignupPageEnums final : public Enumeration {
public:
    SpSignupPageEnums();
};

class SpSignupFeatureEnums final : public Enumeration {
public:
    SpSignupFeatureEnums();
};

class SpSignupActionEnums final : public Enumeration {
public:
    SpSignupActionEnums();
};

class SpErrorEnums final : public Enumeration {
public:
    SpErrorEnums();
};

class SpPlaylistTypeEnums final : public Enumeration {
public:
    SpPlaylistTypeEnums();
};

class SpTrackAvailabilityEnums final : public Enumeration {
public:
    SpTrackAvailabilityEnums();
};

class SpArtistbrowseTypeEnums final : public Enumeration {
public:
    SpArtistbrowseTypeEnums();
};

class SpAlbumTypeEnums final : public Enumeration {
public:
    SpAlbumTypeEnums();
};

class SpImageFormatEnums final : public Enumeration {
public:
    SpImageFormatEnums();
};

class SpRelationTypeEnums final : public Enumeration {
public:
    SpRelationTypeEnums();
};

class SpToplistTypeEnums final : public Enumeration {
public:
    SpToplistTypeEnums();
};

class SpToplistRegionEnums final : public Enumeration {
public:
    SpToplistRegionEnums();
};

// Deliberately without constants.
class SpSearchTypeEnums final : public Enumeration {
public:
    SpSearchTypeEnums();
};

class SpPluginErrorEnums final : public Enumeration {
public:
    SpPluginErrorEnums();
};

#endif
