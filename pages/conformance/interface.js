// The script interface as tables: what each class has, what each constant is.

"use strict";

// A member is "K name(arguments)": K is the kind of its answer, in the lower case a plain value
// (number, boolean, text, id of an image, list, void), in the upper case an object of a class;
// "-" marks what no check calls just so. Arguments are kinds, too, and f a function.
/** @type {{ [name: string]: string }} */
var CLASS_OF = {
    T: "Track", A: "Album", R: "Artist", U: "User", P: "Playlist", C: "Playlistcontainer",
    I: "SpImage", S: "Search", L: "Albumbrowse", B: "Artistbrowse", O: "Toplistbrowse",
    G: "SessionConfig", N: "Session"
};
/** @type {{ [name: string]: string }} */
var MEMBERS = {
    Session: "N create(G) - relogin() - playerLoad(T) U friend(n) n numFriends() n userCountry() " +
        "- playerUnload() - rememberedUser() - playerPrefetch(T) - playerSeek(n) - logout() " +
        "U user() P inboxCreate() - setCacheSize(n) - forgetMe() " +
        "- publishedContainerForUserCreate(t) - starredForUserCreate(t) n connectionstate() " +
        "P starredCreate() - login(ttbt) - playerPlay(b) C Playlistcontainer() " +
        "t signupGetUnacceptedLicenses() - signupPerformAction(n)",
    Sonolet: "t version()",
    Track: "A album() n index() b isPlaceholder() n popularity() t name() b isLocal() " +
        "R artist(n) n numArtists() - setStarred(b) b isLoaded() n disc() n error() " +
        "n duration() b getAvailability() b isStarred()",
    Album: "t name() R artist() i cover(n) b isLoaded() n albumType() n year() b isAvailable()",
    Artist: "t name() b isLoaded() i portrait(n)",
    User: "t picture() t displayName() t canonicalName() b isLoaded() n relationType() " +
        "t fullName()",
    SpImage: "b isLoaded() n error() n format() t data() i id()",
    Search: "- create(tnnnnnnnnnf) A album(n) n totalAlbums() n numAlbums() R artist(n) " +
        "T track(n) n numArtists() n numTracks() b isLoaded() t didYouMean() n totalArtists() " +
        "n totalTracks() n totalPlaylists() n error() t query() n numPlaylists() " +
        "t playlistName(n) t playlistUri(n) t playlistImageUri(n) P playlist(n) v release()",
    Albumbrowse: "A album() n numCopyrights() t copyright(n) R artist() T track(n) n numTracks() " +
        "b isLoaded() n error() v release()",
    Artistbrowse: "A album(n) n numAlbums() R artist() b isLoaded() n error() " +
        "n numTophitTracks() T tophitTrack(n) v release()",
    Toplistbrowse: "b isLoaded() n error() n numArtists() R artist(n) n numAlbums() A album(n) " +
        "n numTracks() T track(n) v release()",
    Playlist: "b isInRam() t getImage() n trackCreateTime(n) b hasPendingChanges() T track(n) " +
        "n numSubscribers() v updateSubscribers() t getDescription() b trackSeen(n) " +
        "n numTracks() - setAutolinkTracks(b) U trackCreator(n) l subscribers() - setInRam(b) " +
        "U owner() - trackSetSeen(nb) b isLoaded() b isCollaborative() t trackMessage(n) " +
        "t name() t uri() - addTracks(Tn) t placeholderUri(n) v release()",
    Playlistcontainer: "P playlist(n) n playlistType(n) n numPlaylists() t playlistFolderName(n) " +
        "b isLoaded() n playlistFolderId(n) U owner() - addPlaylist(P) v release()"
};
// What the root's constructor objects make their objects from.
/** @type {{ [name: string]: string }} */
var CREATE = {
    Track: "- create(t)", Album: "- create(t)", Artist: "- create(t)", Playlist: "- create(t)",
    SpImage: "- create(t)", Search: "- create(tnnnnnnnnnf)", Albumbrowse: "- create(Af)",
    Artistbrowse: "- create(Rnf)", Toplistbrowse: "- create(nntf)"
};
// "name(arguments)", and after a colon the attribute when it is not "on" and the name: none, or
// spelled otherwise.
/** @type {{ [name: string]: string }} */
var EVENTS = {
    Session: "PlayTokenLost() LoggedIn(n) StreamingError(n) ConnectionError(n) " +
        "UserinfoUpdated() LoggedOut() LogMessage(t) MessageToUser(t) EndOfTrack() " +
        "MetadataUpdated():onMetaDataUpdated CredentialsBlobUpdated(t) ShowTrialWelcome() " +
        "OfflineStatusUpdated():- OfflineError(n):- ShowSignupPage(nbnt):- " +
        "ShowSignupErrorPage(nn):-",
    Sonolet: "TrackProgress(n) Error() LogMessage() TrackComplete()",
    SpImage: "ImageLoaded(I)",
    Playlist: "SubscribersChanged(P) PlaylistRenamed(P) PlaylistUpdateInProgress(Pb) " +
        "TracksMoved(Pln) DescriptionChanged(Pt) TrackCreatedChanged(PnUn) TracksRemoved(Pl) " +
        "PlaylistStateChanged(P) TrackSeenChanged(Pnb) TracksAddedEvent(Pln):onTracksAdded " +
        "PlaylistMetadataUpdated(P) ImageChanged(Pt) TrackMessageChanged(Pnt)",
    Playlistcontainer: "PlaylistAdded(CPn) PlaylistMoved(CPnn) ContainerLoaded(C) " +
        "PlaylistRemoved(CPn)"
};
// Prefix of the names, then the names in the order of their values; a number sets the next one.
/** @type {{ [name: string]: string }} */
var CONSTANTS = {
    SP_SIGNUP_PAGE: "SP_SIGNUP_PAGE_ NONE FACEBOOK_LOGIN ENTER_CREDENTIALS MERGING_ACCOUNTS " +
        "SPOTIFY_LOGIN POST_TO_OPENGRAPH_OPTION DONE",
    SP_SIGNUP_FEATURE: "SP_SIGNUP_FEATURE_ 1 CONNECT_TO_FACEBOOK MERGE_ACCOUNT 4 SHOW_LICENSES " +
        "8 SHOW_POST_OG_OPTION",
    SP_SIGNUP_ACTION: "SP_SIGNUP_ACTION_ CONNECT_TO_FACEBOOK CONNECT_TO_FACEBOOK_COMPLETED " +
        "LOGIN_WITH_SPOTIFY ACCEPT CANCEL_FACEBOOK_CONNECT MERGE_WITH_ACCOUNT GO_BACK " +
        "CANCEL_SIGNUP ACCEPT_LICENSES",
    SP_ERROR: "SP_ERROR_ OK BAD_API_VERSION API_INITIALIZATION_FAILED TRACK_NOT_PLAYABLE 5 " +
        "BAD_APPLICATION_KEY BAD_USERNAME_OR_PASSWORD USER_BANNED UNABLE_TO_CONTACT_SERVER " +
        "CLIENT_TOO_OLD OTHER_PERMANENT BAD_USER_AGENT MISSING_CALLBACK INVALID_INDATA " +
        "INDEX_OUT_OF_RANGE USER_NEEDS_PREMIUM OTHER_TRANSIENT IS_LOADING NO_STREAM_AVAILABLE " +
        "PERMISSION_DENIED INBOX_IS_FULL NO_CACHE NO_SUCH_USER NO_CREDENTIALS " +
        "NETWORK_DISABLED INVALID_DEVICE_ID CANT_OPEN_TRACE_FILE APPLICATION_BANNED " +
        "HOST_NOT_FOUND TIMEOUT ACCESS_DENIED OFFLINE_TOO_MANY_TRACKS OFFLINE_DISK_CACHE " +
        "OFFLINE_EXPIRED OFFLINE_NOT_ALLOWED OFFLINE_LICENSE_LOST OFFLINE_LICENSE_ERROR",
    SP_PLAYLIST_TYPE: "SP_PLAYLIST_TYPE_ PLAYLIST START_FOLDER END_FOLDER PLACEHOLDER",
    SP_TRACK_AVAILABILITY: "SP_TRACK_AVAILABILITY_ UNAVAILABLE AVAILABLE NOT_STREAMABLE " +
        "BANNED_BY_ARTIST",
    SP_ARTISTBROWSE_TYPE: "SP_ARTISTBROWSE_ FULL NO_TRACKS NO_ALBUMS",
    SP_ALBUMTYPE: "SP_ALBUMTYPE_ ALBUM SINGLE COMPILATION UNKNOWN",
    SP_IMAGE_FORMAT: "SP_IMAGE_FORMAT_ -1 UNKNOWN JPEG",
    SP_RELATION_TYPE: "SP_RELATION_TYPE_ UNKNOWN NONE UNIDIRECTIONAL BIDIRECTIONAL",
    SP_TOPLIST_TYPE: "SP_TOPLIST_TYPE_ ARTISTS ALBUMS TRACKS",
    SP_TOPLIST_REGION: "SP_TOPLIST_REGION_ EVERYWHERE USER",
    SP_SEARCH_TYPE: "",
    SP_PLUGIN_ERROR: "SP_PLUGIN_ERROR_ OK GENERAL NO_AUDIO"
};
/** @type {{ [name: string]: string }} */
var CONFIG = {
    userAgent: "t", compressPlaylists: "b", dontSaveMetadataForPlaylists: "b",
    initiallyUnloadPlaylists: "b", proxy: "t", proxyUsername: "t", proxyPassword: "t"
};

// Messages of exceptions that come from many members.
var NOT_RETRIEVED = "Failed to retrieve object from Spotify";
var NO_SESSION = "Spotify not initialized correctly";
