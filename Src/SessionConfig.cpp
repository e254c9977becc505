#include "SessionConfig.h"

SessionConfig::SessionConfig() {
    text<&SessionConfig::userAgent>("userAgent");
    flag<&SessionConfig::compressPlaylists>("compressPlaylists");
    flag<&SessionConfig::dontSaveMetadataForPlaylists>("dontSaveMetadataForPlaylists");
    flag<&SessionConfig::initiallyUnloadPlaylists>("initiallyUnloadPlaylists");
    text<&SessionConfig::proxy>("proxy");
    text<&SessionConfig::proxyUsername>("proxyUsername");
    text<&SessionConfig::proxyPassword>("proxyPassword");
}

void SessionConfig::apply(sp_session_config& config) const {
    config.user_agent = userAgent.c_str();
    config.compress_playlists = compressPlaylists;
    config.dont_save_metadata_for_playlists = dontSaveMetadataForPlaylists;
    config.initially_unload_playlists = initiallyUnloadPlaylists;
    config.proxy = proxy.c_str();
    config.proxy_username = proxyUsername.c_str();
    config.proxy_password = proxyPassword.c_str();
}
