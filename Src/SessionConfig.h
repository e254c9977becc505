#ifndef SONOLET_SESSION_CONFIG_H
#define SONOLET_SESSION_CONFIG_H

#include "jspp/interface.h"

#include "libspotify/api.h"

#include <string>

// The options that a page sets before it creates the session, as attributes that can be read and
// written. Script thread. Errors: a value of another kind throws "Not a string" or "Not a boolean",
// and the old one stays. What is set after the session was created has no effect.
class SessionConfig final : public jspp::interface {
public:
    // Registers the attributes in the order of the fields.
    SessionConfig();

    // Fills in the options. The texts are borrowed: they are valid until script sets them anew.
    // Other fields of `config` stay as they are.
    void apply(sp_session_config& config) const;

private:
    // The accessors of an attribute that is one field.
    template <std::string SessionConfig::*Field>
    void getText(jspp::result_context& context) const {
        context.return_string(this->*Field);
    }
    template <std::string SessionConfig::*Field>
    void setText(jspp::parameter_context& context) {
        this->*Field = context.string(0);
    }
    template <bool SessionConfig::*Field>
    void getFlag(jspp::result_context& context) const {
        context.return_boolean(this->*Field);
    }
    template <bool SessionConfig::*Field>
    void setFlag(jspp::parameter_context& context) {
        this->*Field = context.boolean(0);
    }

    // Registers the attribute of a field.
    template <std::string SessionConfig::*Field>
    void text(const std::string& name) {
        _attribute_get(name, &SessionConfig::getText<Field>);
        _attribute_set(name, &SessionConfig::setText<Field>);
    }
    template <bool SessionConfig::*Field>
    void flag(const std::string& name) {
        _attribute_get(name, &SessionConfig::getFlag<Field>);
        _attribute_set(name, &SessionConfig::setFlag<Field>);
    }

    // What a page that sets nothing gets; libspotify takes an empty proxy as none. 1 to 255 bytes,
    // else libspotify refuses the session.
    std::string userAgent = "User-Agent string";
    bool compressPlaylists = false;
    bool dontSaveMetadataForPlaylists = false;
    bool initiallyUnloadPlaylists = false;
    std::string proxy;
    std::string proxyUsername;
    std::string proxyPassword;
};

#endif
