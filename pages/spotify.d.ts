// The script interface of the plug-in: the global `Spotify` and everything reachable from it.
//
// Errors. A call that fails throws; "throws" below quotes the message word for word. What the
// music service answers is never thrown: it comes back as a number, to be compared with
// `Spotify.SP_ERROR` and turned into text with `Spotify.errorMessage`. Every function that takes
// arguments checks them first, in order, and throws:
//
//     an argument is missing            "Not enough arguments"
//     a number is wanted                "Not a number"
//     a text is wanted                  "Not a string"
//     true or false is wanted           "Not a boolean"
//     a function is wanted              "Not an object"
//     an object of the plug-in          "Not an interface" (no object), "Not a jspp interface" (an
//     is wanted                         object of the page), "Parameter is not of the requested
//                                       interface type." (another class)
//     called on no object of the        "Not a jspp interface"
//     plug-in (a detached function)
//
// Further arguments are ignored. Numbers that stand for whole ones are truncated toward zero.
//
// Objects. Every call that answers an object of the music service makes a new wrapper, so
// compare the `uri` of playlists, the `id` of images, the `canonicalName` of users, and of others the
// link they were created from. `Session.logout` empties all wrappers but containers: from then on each
// member that asks the service throws "Failed to retrieve object from Spotify"; playlists and images
// lose their members, but for the two listener functions.
//
// Events. Listeners and handlers run later, from the page's event loop: never inside the call that
// caused the event. The handler of an "on" attribute runs after the listeners. It can be replaced
// and not removed: to assign anything but a function or an object throws "Not an object".
//
// Texts that the service does not have are empty.

declare namespace Spotify {
    // ---- Events -----------------------------------------------------------------------------------

    /** What raises events. `Events` maps the names of events to their listeners. */
    interface EventSource<Events> {
        /**
         * Adds a listener; the same function added twice is called twice. Any name is taken, and one
         * that is no event's is never called.
         * @throws "Not enough arguments", "Not a string", "Not an object"
         */
        addEventListener<Name extends keyof Events & string>(event: Name, listener: Events[Name]): void;
        /**
         * Takes one entry of that function away, the oldest; does nothing when there is none.
         * @throws "Not enough arguments", "Not a string", "Not an object"
         */
        removeEventListener<Name extends keyof Events & string>(
            event: Name,
            listener: Events[Name],
        ): void;
    }

    /** For objects that offer the two listener functions and raise no event. */
    interface NoEvents {}

    // ---- The root ---------------------------------------------------------------------------------

    /** The global `Spotify`. Each attribute answers the same object at each read. */
    interface Root extends EventSource<NoEvents> {
        /** Of the music service's client library. */
        readonly SPOTIFY_API_VERSION: 12;
        /** Of this interface. */
        readonly SPOTIFY_JS_API_VERSION: "12.8";

        readonly Session: Session;
        readonly SessionConfig: SessionConfig;
        readonly Sonolet: Sonolet;

        readonly Track: TrackConstructor;
        readonly Album: AlbumConstructor;
        readonly Artist: ArtistConstructor;
        readonly Playlist: PlaylistConstructor;
        readonly SpImage: SpImageConstructor;
        readonly Search: SearchConstructor;
        readonly Albumbrowse: AlbumbrowseConstructor;
        readonly Artistbrowse: ArtistbrowseConstructor;
        readonly Toplistbrowse: ToplistbrowseConstructor;

        readonly SP_SIGNUP_PAGE: SignupPages;
        readonly SP_SIGNUP_FEATURE: SignupFeatures;
        readonly SP_SIGNUP_ACTION: SignupActions;
        readonly SP_ERROR: ErrorCodes;
        readonly SP_PLAYLIST_TYPE: PlaylistTypes;
        readonly SP_TRACK_AVAILABILITY: TrackAvailabilities;
        readonly SP_ARTISTBROWSE_TYPE: ArtistbrowseTypes;
        readonly SP_ALBUMTYPE: AlbumTypes;
        readonly SP_IMAGE_FORMAT: ImageFormats;
        readonly SP_RELATION_TYPE: RelationTypes;
        readonly SP_TOPLIST_TYPE: ToplistTypes;
        readonly SP_TOPLIST_REGION: ToplistRegions;
        readonly SP_SEARCH_TYPE: SearchTypes;
        readonly SP_PLUGIN_ERROR: PluginErrors;

        /**
         * The client library's text for an error code.
         * @throws "Not enough arguments", "Not a number"
         */
        errorMessage(code: number): string;
    }

    // ---- The plug-in ------------------------------------------------------------------------------

    interface SonoletEvents {
        /**
         * On every poll (about four times a second) once the session is created, whether or not
         * something plays.
         * @param position what has been played of the loaded track, in seconds; 0 without a track.
         *     A seek does not move it.
         */
        TrackProgress: (position: number) => void;
        /** The last sound of the track has been played. Also when the page is unloaded. */
        TrackComplete: () => void;
        /** Never raised. */
        Error: () => void;
        /** Never raised: the library's log lines are the session's "LogMessage". */
        LogMessage: () => void;
    }

    /** The plug-in itself: its version, and how playback goes on. */
    interface Sonolet extends EventSource<SonoletEvents> {
        onTrackProgress: SonoletEvents["TrackProgress"] | null;
        onTrackComplete: SonoletEvents["TrackComplete"] | null;
        onError: SonoletEvents["Error"] | null;
        onLogMessage: SonoletEvents["LogMessage"] | null;
        /** "12.8/" and the build of the client library. */
        version(): string;
    }

    // ---- The session ------------------------------------------------------------------------------

    /**
     * What `Session.create` is given. Later changes have no effect. To assign something of another
     * type throws "Not a string" or "Not a boolean" and changes nothing.
     */
    interface SessionConfig {
        /** Without a change "User-Agent string". */
        userAgent: string;
        compressPlaylists: boolean;
        dontSaveMetadataForPlaylists: boolean;
        initiallyUnloadPlaylists: boolean;
        proxy: string;
        proxyUsername: string;
        proxyPassword: string;
    }

    interface SessionEvents {
        /** The outcome of a login: `SP_ERROR_OK` or what went wrong. */
        LoggedIn: (error: ErrorCode) => void;
        LoggedOut: () => void;
        /** Something that was loading may be there now. The attribute is `onMetaDataUpdated`. */
        MetadataUpdated: () => void;
        /** The connection is lost, or with `SP_ERROR_OK` there again. */
        ConnectionError: (error: ErrorCode) => void;
        /** The service wants the user to read this. */
        MessageToUser: (message: string) => void;
        /** The account plays somewhere else now; playback here is paused. */
        PlayTokenLost: () => void;
        /** A line of the client library's log. */
        LogMessage: (line: string) => void;
        /** The whole track is decoded. It is still to be heard: see `Sonolet`'s "TrackComplete". */
        EndOfTrack: () => void;
        StreamingError: (error: ErrorCode) => void;
        UserinfoUpdated: () => void;
        /** No attribute. */
        OfflineStatusUpdated: () => void;
        /** No attribute. */
        OfflineError: (error: ErrorCode) => void;
        /** A text that `login` takes in place of the password. */
        CredentialsBlobUpdated: (blob: string) => void;
        /**
         * No attribute.
         * @param features flags of `SP_SIGNUP_FEATURE`
         */
        ShowSignupPage: (
            page: SignupPage,
            loading: boolean,
            features: number,
            recentUser: string,
        ) => void;
        /** No attribute. */
        ShowSignupErrorPage: (page: SignupPage, error: ErrorCode) => void;
        ShowTrialWelcome: () => void;
    }

    /**
     * The one session. Every function but `create` throws "Spotify is not initialized" until
     * `create` has worked, before it looks at its arguments. What is behind `user`,
     * `Playlistcontainer` and the functions for lists may not be there, above all while nobody is
     * logged in: "Failed to retrieve object from Spotify".
     */
    interface Session extends EventSource<SessionEvents> {
        /**
         * Creates the session; the second and later calls only answer it, whatever they are given.
         * @throws "Not enough arguments", "Not an interface", "Not a jspp interface",
         *     "Parameter is not of the requested interface type.", "Failed to initialize libspotify"
         */
        create(config: SessionConfig): Session;

        /**
         * Begins a login, whose outcome is the event "LoggedIn".
         * @param remember whether `relogin` shall do without the password
         * @param blob what "CredentialsBlobUpdated" brought, in place of the password; else ""
         * @throws "Not enough arguments", "Not a string", "Not a boolean"
         */
        login(userName: string, password: string, remember: boolean, blob: string): ErrorCode;
        /** Begins a login of the remembered user. `SP_ERROR_NO_CREDENTIALS`: nobody is. */
        relogin(): ErrorCode;
        /** The name of the remembered user; null when nobody is. */
        rememberedUser(): string | null;
        /** Forgets the remembered user. */
        forgetMe(): ErrorCode;
        /** Empties all wrappers (see above) and begins a logout, which ends with "LoggedOut". */
        logout(): void;
        connectionstate(): ConnectionState;

        /**
         * The user who is logged in.
         * @throws "Failed to retrieve object from Spotify"
         */
        user(): User;
        /** Two letters: the first is `code >> 8`, the second `code & 255`. */
        userCountry(): number;
        numFriends(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        friend(index: number): User;

        /**
         * The playlists and folders of the user.
         * @throws "Failed to retrieve object from Spotify"
         */
        Playlistcontainer(): Playlistcontainer;
        /**
         * What another user has published.
         * @throws "Not enough arguments", "Not a string", "Failed to retrieve object from Spotify"
         */
        publishedContainerForUserCreate(userName: string): Playlistcontainer;
        /**
         * The starred tracks of the user.
         * @throws "Failed to retrieve object from Spotify"
         */
        starredCreate(): Playlist;
        /** @throws "Not enough arguments", "Not a string", "Failed to retrieve object from Spotify" */
        starredForUserCreate(userName: string): Playlist;
        /**
         * What others have sent to the user.
         * @throws "Failed to retrieve object from Spotify"
         */
        inboxCreate(): Playlist;

        /**
         * How much the client library may keep on disk.
         * @throws "Not enough arguments", "Not a number"
         */
        setCacheSize(megabytes: number): void;

        /**
         * Takes the place of what was loaded; `playerPlay(true)` starts it. `error` of the track
         * tells why it cannot be played, "isLoaded" whether that is known yet.
         * @throws "Not enough arguments", "Not an interface", "Not a jspp interface",
         *     "Parameter is not of the requested interface type.",
         *     "Failed to retrieve object from Spotify", "Could not initialize backend"
         */
        playerLoad(track: Track): ErrorCode;
        /**
         * Plays (true) or pauses (false).
         * @throws "Not enough arguments", "Not a boolean"
         */
        playerPlay(play: boolean): ErrorCode;
        /**
         * Goes on at another place. What is buffered already is played out first.
         * @param position in milliseconds from the start of the track
         * @throws "Not enough arguments", "Not a number"
         */
        playerSeek(position: number): void;
        /** Ends decoding. What is buffered already is played out. */
        playerUnload(): void;
        /**
         * Makes a later `playerLoad` of the track start sooner.
         * @throws as `playerLoad` does for its argument
         */
        playerPrefetch(track: Track): ErrorCode;

        /** The licences that the user has to accept; empty: none. */
        signupGetUnacceptedLicenses(): string;
        /** @throws "Not enough arguments", "Not a number" */
        signupPerformAction(action: SignupAction): ErrorCode;

        onPlayTokenLost: SessionEvents["PlayTokenLost"] | null;
        onLoggedIn: SessionEvents["LoggedIn"] | null;
        onStreamingError: SessionEvents["StreamingError"] | null;
        onConnectionError: SessionEvents["ConnectionError"] | null;
        onUserinfoUpdated: SessionEvents["UserinfoUpdated"] | null;
        onLoggedOut: SessionEvents["LoggedOut"] | null;
        onLogMessage: SessionEvents["LogMessage"] | null;
        onMessageToUser: SessionEvents["MessageToUser"] | null;
        onEndOfTrack: SessionEvents["EndOfTrack"] | null;
        /** Of the event "MetadataUpdated", which is spelled otherwise. */
        onMetaDataUpdated: SessionEvents["MetadataUpdated"] | null;
        onCredentialsBlobUpdated: SessionEvents["CredentialsBlobUpdated"] | null;
        onShowTrialWelcome: SessionEvents["ShowTrialWelcome"] | null;
    }

    // ---- Tracks, albums, artists, users -----------------------------------------------------------

    interface TrackConstructor extends EventSource<NoEvents> {
        /**
         * The track of a link ("spotify:track:..."). It may be loading: see `Track.isLoaded`.
         * @throws "Not enough arguments", "Not a string", "Spotify not initialized correctly" (no
         *     session), "Failed to retrieve object from Spotify" (no link, or not a track's)
         */
        create(link: string): Track;
    }

    interface Track extends EventSource<NoEvents> {
        /** Whether the rest is known. It may become so with the session's "MetadataUpdated". */
        isLoaded(): boolean;
        /** `SP_ERROR_IS_LOADING` while it loads; another one when it never will. */
        error(): ErrorCode;
        name(): string;
        /** In milliseconds. */
        duration(): number;
        /** From 0 to 100. */
        popularity(): number;
        /** On the disc, from 1; 0 when the file does not tell it. */
        index(): number;
        /** Of the disc, from 1. */
        disc(): number;
        numArtists(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        artist(index: number): Artist;
        /** @throws "Failed to retrieve object from Spotify" (loading, say) */
        album(): Album;
        /** Whether it is anything but `SP_TRACK_AVAILABILITY_UNAVAILABLE`. */
        getAvailability(): boolean;
        /** Whether it is a file of this device. */
        isLocal(): boolean;
        /** Whether it stands for something else in a playlist: see `Playlist.placeholderUri`. */
        isPlaceholder(): boolean;
        isStarred(): boolean;
        /** @throws "Not enough arguments", "Not a boolean" */
        setStarred(starred: boolean): void;
    }

    interface AlbumConstructor extends EventSource<NoEvents> {
        /** As `Track.create`, for the link of an album. */
        create(link: string): Album;
    }

    interface Album extends EventSource<NoEvents> {
        isLoaded(): boolean;
        name(): string;
        /** @throws "Failed to retrieve object from Spotify" */
        artist(): Artist;
        /** Of release; 0: not known. */
        year(): number;
        albumType(): AlbumType;
        isAvailable(): boolean;
        /**
         * The id of the cover, for `SpImage.create`.
         * @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify"
         *     (no cover)
         */
        cover(size: ImageSize): string;
    }

    interface ArtistConstructor extends EventSource<NoEvents> {
        /** As `Track.create`, for the link of an artist. */
        create(link: string): Artist;
    }

    interface Artist extends EventSource<NoEvents> {
        isLoaded(): boolean;
        name(): string;
        /**
         * The id of the portrait, for `SpImage.create`.
         * @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify"
         *     (no portrait)
         */
        portrait(size: ImageSize): string;
    }

    interface User extends EventSource<NoEvents> {
        isLoaded(): boolean;
        /** The name of the account. */
        canonicalName(): string;
        displayName(): string;
        fullName(): string;
        /** The address of a picture. */
        picture(): string;
        /** To the user who is logged in. */
        relationType(): RelationType;
    }

    // ---- Images -----------------------------------------------------------------------------------

    interface SpImageConstructor extends EventSource<NoEvents> {
        /**
         * The image of an id: 20 bytes as 28 characters of Base64. A shorter text is filled up.
         * @throws "Spotify not initialized correctly" (no session), "Not enough arguments",
         *     "Not a string", "Failed to decode ID with base64",
         *     "Failed to retrieve object from Spotify"
         */
        create(id: string): SpImage;
    }

    interface SpImageEvents {
        /** The image is there, or will never be: `error` tells. */
        ImageLoaded: (image: SpImage) => void;
    }

    interface SpImage extends EventSource<SpImageEvents> {
        isLoaded(): boolean;
        error(): ErrorCode;
        format(): ImageFormat;
        /**
         * The bytes of the file in Base64: `"data:image/jpeg;base64," + image.data()` is an address.
         * @throws "Image size is zero" (not loaded, or without an image)
         */
        data(): string;
        /** @throws "Failed to retrieve object from Spotify" */
        id(): string;
        onImageLoaded: SpImageEvents["ImageLoaded"] | null;
    }

    // ---- Search and browse ------------------------------------------------------------------------

    interface SearchConstructor extends EventSource<NoEvents> {
        /**
         * Begins a search. Offsets and counts say which part of the results is wanted.
         * @param type 0 standard, 1 suggestions while the user types
         * @param complete is called once with a second wrapper of what is returned here, also when
         *     the search fails: its `error` tells
         * @throws "Not enough arguments", "Not a string", "Not a number", "Not an object",
         *     "Spotify not initialized correctly" (no session),
         *     "Failed to retrieve object from Spotify"
         */
        create(
            query: string,
            trackOffset: number,
            trackCount: number,
            albumOffset: number,
            albumCount: number,
            artistOffset: number,
            artistCount: number,
            playlistOffset: number,
            playlistCount: number,
            type: number,
            complete: (result: Search) => void,
        ): Search;
    }

    /** A finished search offers `create`, too. */
    interface Search extends SearchConstructor {
        isLoaded(): boolean;
        error(): ErrorCode;
        query(): string;
        /** A better query; empty: none. */
        didYouMean(): string;
        /** How many are here; `totalTracks`: how many there are. */
        numTracks(): number;
        totalTracks(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        track(index: number): Track;
        numAlbums(): number;
        totalAlbums(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        album(index: number): Album;
        numArtists(): number;
        totalArtists(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        artist(index: number): Artist;
        numPlaylists(): number;
        totalPlaylists(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        playlist(index: number): Playlist;
        /** @throws "Not enough arguments", "Not a number" */
        playlistName(index: number): string;
        /** @throws "Not enough arguments", "Not a number" */
        playlistUri(index: number): string;
        /** @throws "Not enough arguments", "Not a number" */
        playlistImageUri(index: number): string;
        /** Does nothing. */
        release(): void;
    }

    interface AlbumbrowseConstructor extends EventSource<NoEvents> {
        /**
         * Begins to look up what an album holds.
         * @param complete as for `Search.create`
         * @throws "Not enough arguments", "Not an interface", "Not a jspp interface",
         *     "Parameter is not of the requested interface type.", "Not an object",
         *     "Spotify not initialized correctly" (no session),
         *     "Failed to retrieve object from Spotify"
         */
        create(album: Album, complete: (result: Albumbrowse) => void): Albumbrowse;
    }

    interface Albumbrowse extends EventSource<NoEvents> {
        isLoaded(): boolean;
        error(): ErrorCode;
        /** @throws "Failed to retrieve object from Spotify" */
        album(): Album;
        /** @throws "Failed to retrieve object from Spotify" */
        artist(): Artist;
        numTracks(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        track(index: number): Track;
        numCopyrights(): number;
        /** @throws "Not enough arguments", "Not a number" */
        copyright(index: number): string;
        /** Does nothing. */
        release(): void;
    }

    interface ArtistbrowseConstructor extends EventSource<NoEvents> {
        /**
         * Begins to look up what an artist has made.
         * @param complete as for `Search.create`
         * @throws "Not enough arguments", "Not an interface", "Not a jspp interface",
         *     "Parameter is not of the requested interface type.", "Not a number",
         *     "Not an object", "Spotify was not initialized correctly" (no session),
         *     "Failed to retrieve object from Spotify"
         */
        create(
            artist: Artist,
            type: ArtistbrowseType,
            complete: (result: Artistbrowse) => void,
        ): Artistbrowse;
    }

    interface Artistbrowse extends EventSource<NoEvents> {
        isLoaded(): boolean;
        error(): ErrorCode;
        /** @throws "Failed to retrieve object from Spotify" */
        artist(): Artist;
        numAlbums(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        album(index: number): Album;
        numTophitTracks(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        tophitTrack(index: number): Track;
        /** Does nothing. */
        release(): void;
    }

    interface ToplistbrowseConstructor extends EventSource<NoEvents> {
        /**
         * Begins to look up a top list.
         * @param region one of `SP_TOPLIST_REGION`, or a country as `Session.userCountry` tells it
         * @param user for the region `SP_TOPLIST_REGION_USER`; "": the one who is logged in
         * @param complete as for `Search.create`
         * @throws "Not enough arguments", "Not a number", "Not a string", "Not an object",
         *     "Spotify not initialized correctly" (no session),
         *     "Failed to retrieve object from Spotify"
         */
        create(
            type: ToplistType,
            region: number,
            user: string,
            complete: (result: Toplistbrowse) => void,
        ): Toplistbrowse;
    }

    interface Toplistbrowse extends EventSource<NoEvents> {
        isLoaded(): boolean;
        error(): ErrorCode;
        numArtists(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        artist(index: number): Artist;
        numAlbums(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        album(index: number): Album;
        numTracks(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        track(index: number): Track;
        /** Does nothing. */
        release(): void;
    }

    // ---- Playlists --------------------------------------------------------------------------------

    interface PlaylistConstructor extends EventSource<NoEvents> {
        /**
         * The playlist of a link ("spotify:user:...").
         * @throws "Not enough arguments", "Not a string", "Spotify not initialized correctly" (no
         *     session), "Failed to retrieve object from Spotify"
         */
        create(link: string): Playlist;
    }

    /** The first argument is always the playlist itself. Positions count from 0. */
    interface PlaylistEvents {
        /** The attribute is `onTracksAdded`. */
        TracksAddedEvent: (playlist: Playlist, tracks: TrackArray, position: number) => void;
        /** @param positions where the tracks were */
        TracksRemoved: (playlist: Playlist, positions: NumberArray) => void;
        /** @param positions where the tracks were */
        TracksMoved: (playlist: Playlist, positions: NumberArray, newPosition: number) => void;
        PlaylistRenamed: (playlist: Playlist) => void;
        /** It is loaded, or "isCollaborative" or "hasPendingChanges" may answer otherwise. */
        PlaylistStateChanged: (playlist: Playlist) => void;
        /** Changes begin (`done` is false), and are all told (true). */
        PlaylistUpdateInProgress: (playlist: Playlist, done: boolean) => void;
        /** More is known of some track. */
        PlaylistMetadataUpdated: (playlist: Playlist) => void;
        /** @param when seconds since 1970 */
        TrackCreatedChanged: (playlist: Playlist, position: number, user: User, when: number) => void;
        TrackSeenChanged: (playlist: Playlist, position: number, seen: boolean) => void;
        DescriptionChanged: (playlist: Playlist, description: string) => void;
        /** @param id for `SpImage.create`; empty: no image any more */
        ImageChanged: (playlist: Playlist, id: string) => void;
        TrackMessageChanged: (playlist: Playlist, position: number, message: string) => void;
        SubscribersChanged: (playlist: Playlist) => void;
    }

    interface Playlist extends EventSource<PlaylistEvents> {
        isLoaded(): boolean;
        name(): string;
        /** The link. */
        uri(): string;
        /** @throws "Failed to retrieve object from Spotify" */
        owner(): User;
        getDescription(): string;
        /** The id of the image, for `SpImage.create`; empty: none. */
        getImage(): string;
        /** Whether others may change it. */
        isCollaborative(): boolean;
        /** Whether changes have still to reach the service. */
        hasPendingChanges(): boolean;
        isInRam(): boolean;
        /** @throws "Not enough arguments", "Not a boolean" */
        setInRam(inRam: boolean): void;
        /**
         * Whether tracks that cannot be played shall be replaced by others that can.
         * @throws "Not enough arguments", "Not a boolean"
         */
        setAutolinkTracks(link: boolean): void;

        numTracks(): number;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        track(index: number): Track;
        /**
         * Adds a track before the one at `position`; at `numTracks()`: at the end. The outcome shows
         * in the event "TracksAddedEvent".
         * @throws "Not enough arguments", "Not an interface", "Not a jspp interface",
         *     "Parameter is not of the requested interface type.", "Not a number",
         *     "Failed to retrieve object from Spotify"
         */
        addTracks(track: Track, position: number): void;
        /**
         * When the track was added, in seconds since 1970.
         * @throws "Not enough arguments", "Not a number"
         */
        trackCreateTime(index: number): number;
        /**
         * Who added the track.
         * @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify"
         */
        trackCreator(index: number): User;
        /** @throws "Not enough arguments", "Not a number" */
        trackSeen(index: number): boolean;
        /** @throws "Not enough arguments", "Not a number", "Not a boolean" */
        trackSetSeen(index: number, seen: boolean): void;
        /** @throws "Not enough arguments", "Not a number" */
        trackMessage(index: number): string;
        /**
         * The link of the track, also of one that stands for something else.
         * @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify"
         */
        placeholderUri(index: number): string;

        numSubscribers(): number;
        /** Their names, as far as they are known. */
        subscribers(): StringArray;
        /** Asks for them again: "SubscribersChanged" follows. */
        updateSubscribers(): void;
        /** Does nothing. */
        release(): void;

        onSubscribersChanged: PlaylistEvents["SubscribersChanged"] | null;
        onPlaylistRenamed: PlaylistEvents["PlaylistRenamed"] | null;
        onPlaylistUpdateInProgress: PlaylistEvents["PlaylistUpdateInProgress"] | null;
        onTracksMoved: PlaylistEvents["TracksMoved"] | null;
        onDescriptionChanged: PlaylistEvents["DescriptionChanged"] | null;
        onTrackCreatedChanged: PlaylistEvents["TrackCreatedChanged"] | null;
        onTracksRemoved: PlaylistEvents["TracksRemoved"] | null;
        onPlaylistStateChanged: PlaylistEvents["PlaylistStateChanged"] | null;
        onTrackSeenChanged: PlaylistEvents["TrackSeenChanged"] | null;
        /** Of the event "TracksAddedEvent", which is spelled otherwise. */
        onTracksAdded: PlaylistEvents["TracksAddedEvent"] | null;
        onPlaylistMetadataUpdated: PlaylistEvents["PlaylistMetadataUpdated"] | null;
        onImageChanged: PlaylistEvents["ImageChanged"] | null;
        onTrackMessageChanged: PlaylistEvents["TrackMessageChanged"] | null;
    }

    /** The first argument is always the container itself. Positions count from 0. */
    interface PlaylistcontainerEvents {
        PlaylistAdded: (container: Playlistcontainer, playlist: Playlist, position: number) => void;
        PlaylistRemoved: (container: Playlistcontainer, playlist: Playlist, position: number) => void;
        PlaylistMoved: (
            container: Playlistcontainer,
            playlist: Playlist,
            position: number,
            newPosition: number,
        ) => void;
        ContainerLoaded: (container: Playlistcontainer) => void;
    }

    /**
     * A list of playlists and folders. A folder is two entries, its start and its end, with what is
     * in it between them. Containers outlive a logout.
     */
    interface Playlistcontainer extends EventSource<PlaylistcontainerEvents> {
        isLoaded(): boolean;
        /** @throws "Failed to retrieve object from Spotify" */
        owner(): User;
        /** The number of entries, the ends of folders included. */
        numPlaylists(): number;
        /** @throws "Not enough arguments", "Not a number" */
        playlistType(index: number): PlaylistType;
        /** @throws "Not enough arguments", "Not a number", "Failed to retrieve object from Spotify" */
        playlist(index: number): Playlist;
        /**
         * Of a folder's start, at most 49 bytes; else empty.
         * @throws "Not enough arguments", "Not a number"
         */
        playlistFolderName(index: number): string;
        /**
         * The same at a folder's start and end. Above 2^53 it is not exact.
         * @throws "Not enough arguments", "Not a number"
         */
        playlistFolderId(index: number): number;
        /**
         * Adds a playlist at the end. The outcome shows in the event "PlaylistAdded".
         * @throws "Not enough arguments", "Not an interface", "Not a jspp interface",
         *     "Parameter is not of the requested interface type.",
         *     "Failed to retrieve object from Spotify"
         */
        addPlaylist(playlist: Playlist): void;
        /** Does nothing. */
        release(): void;

        onPlaylistAdded: PlaylistcontainerEvents["PlaylistAdded"] | null;
        /** Can only be read: use `addEventListener`. */
        readonly onPlaylistMoved: null;
        onContainerLoaded: PlaylistcontainerEvents["ContainerLoaded"] | null;
        onPlaylistRemoved: PlaylistcontainerEvents["PlaylistRemoved"] | null;
    }

    // ---- Arrays -----------------------------------------------------------------------------------

    /**
     * Like an array, without its functions: `Array.from({ length: a.length }, (_, i) => a[i])` makes
     * one. To read any other name throws "bad_lexical_cast".
     */
    interface NumberArray {
        readonly length: number;
        /** @throws "Not enough arguments", "Not a number", "Out of bounds array access" */
        item(index: number): number;
        /** Throws "Out of bounds array access"; when written also "Not a number". */
        [index: number]: number;
    }

    /** As `NumberArray`, read-only. */
    interface StringArray {
        readonly length: number;
        /** @throws "Not enough arguments", "Not a number", "Invalid index" */
        item(index: number): string;
        /** Throws "Invalid index". */
        readonly [index: number]: string;
    }

    /** As `NumberArray`, read-only. */
    interface TrackArray {
        readonly length: number;
        /** @throws "Not enough arguments", "Not a number", "Out of bounds array access" */
        item(index: number): Track;
        /** Throws "Out of bounds array access". */
        readonly [index: number]: Track;
    }

    // ---- Enumerations -----------------------------------------------------------------------------

    /** What the music service answers. There is no 4. */
    interface ErrorCodes {
        readonly SP_ERROR_OK: 0;
        readonly SP_ERROR_BAD_API_VERSION: 1;
        readonly SP_ERROR_API_INITIALIZATION_FAILED: 2;
        readonly SP_ERROR_TRACK_NOT_PLAYABLE: 3;
        readonly SP_ERROR_BAD_APPLICATION_KEY: 5;
        readonly SP_ERROR_BAD_USERNAME_OR_PASSWORD: 6;
        readonly SP_ERROR_USER_BANNED: 7;
        readonly SP_ERROR_UNABLE_TO_CONTACT_SERVER: 8;
        readonly SP_ERROR_CLIENT_TOO_OLD: 9;
        readonly SP_ERROR_OTHER_PERMANENT: 10;
        readonly SP_ERROR_BAD_USER_AGENT: 11;
        readonly SP_ERROR_MISSING_CALLBACK: 12;
        readonly SP_ERROR_INVALID_INDATA: 13;
        readonly SP_ERROR_INDEX_OUT_OF_RANGE: 14;
        readonly SP_ERROR_USER_NEEDS_PREMIUM: 15;
        readonly SP_ERROR_OTHER_TRANSIENT: 16;
        readonly SP_ERROR_IS_LOADING: 17;
        readonly SP_ERROR_NO_STREAM_AVAILABLE: 18;
        readonly SP_ERROR_PERMISSION_DENIED: 19;
        readonly SP_ERROR_INBOX_IS_FULL: 20;
        readonly SP_ERROR_NO_CACHE: 21;
        readonly SP_ERROR_NO_SUCH_USER: 22;
        readonly SP_ERROR_NO_CREDENTIALS: 23;
        readonly SP_ERROR_NETWORK_DISABLED: 24;
        readonly SP_ERROR_INVALID_DEVICE_ID: 25;
        readonly SP_ERROR_CANT_OPEN_TRACE_FILE: 26;
        readonly SP_ERROR_APPLICATION_BANNED: 27;
        readonly SP_ERROR_HOST_NOT_FOUND: 28;
        readonly SP_ERROR_TIMEOUT: 29;
        readonly SP_ERROR_ACCESS_DENIED: 30;
        readonly SP_ERROR_OFFLINE_TOO_MANY_TRACKS: 31;
        readonly SP_ERROR_OFFLINE_DISK_CACHE: 32;
        readonly SP_ERROR_OFFLINE_EXPIRED: 33;
        readonly SP_ERROR_OFFLINE_NOT_ALLOWED: 34;
        readonly SP_ERROR_OFFLINE_LICENSE_LOST: 35;
        readonly SP_ERROR_OFFLINE_LICENSE_ERROR: 36;
    }
    type ErrorCode = ErrorCodes[keyof ErrorCodes];

    interface SignupPages {
        readonly SP_SIGNUP_PAGE_NONE: 0;
        readonly SP_SIGNUP_PAGE_FACEBOOK_LOGIN: 1;
        readonly SP_SIGNUP_PAGE_ENTER_CREDENTIALS: 2;
        readonly SP_SIGNUP_PAGE_MERGING_ACCOUNTS: 3;
        readonly SP_SIGNUP_PAGE_SPOTIFY_LOGIN: 4;
        readonly SP_SIGNUP_PAGE_POST_TO_OPENGRAPH_OPTION: 5;
        readonly SP_SIGNUP_PAGE_DONE: 6;
    }
    type SignupPage = SignupPages[keyof SignupPages];

    /** Flags. */
    interface SignupFeatures {
        readonly SP_SIGNUP_FEATURE_CONNECT_TO_FACEBOOK: 1;
        readonly SP_SIGNUP_FEATURE_MERGE_ACCOUNT: 2;
        readonly SP_SIGNUP_FEATURE_SHOW_LICENSES: 4;
        readonly SP_SIGNUP_FEATURE_SHOW_POST_OG_OPTION: 8;
    }

    interface SignupActions {
        readonly SP_SIGNUP_ACTION_CONNECT_TO_FACEBOOK: 0;
        readonly SP_SIGNUP_ACTION_CONNECT_TO_FACEBOOK_COMPLETED: 1;
        readonly SP_SIGNUP_ACTION_LOGIN_WITH_SPOTIFY: 2;
        readonly SP_SIGNUP_ACTION_ACCEPT: 3;
        readonly SP_SIGNUP_ACTION_CANCEL_FACEBOOK_CONNECT: 4;
        readonly SP_SIGNUP_ACTION_MERGE_WITH_ACCOUNT: 5;
        readonly SP_SIGNUP_ACTION_GO_BACK: 6;
        readonly SP_SIGNUP_ACTION_CANCEL_SIGNUP: 7;
        readonly SP_SIGNUP_ACTION_ACCEPT_LICENSES: 8;
    }
    type SignupAction = SignupActions[keyof SignupActions];

    interface PlaylistTypes {
        readonly SP_PLAYLIST_TYPE_PLAYLIST: 0;
        readonly SP_PLAYLIST_TYPE_START_FOLDER: 1;
        readonly SP_PLAYLIST_TYPE_END_FOLDER: 2;
        readonly SP_PLAYLIST_TYPE_PLACEHOLDER: 3;
    }
    type PlaylistType = PlaylistTypes[keyof PlaylistTypes];

    /** No function answers one of these: `Track.getAvailability` answers whether it is not 0. */
    interface TrackAvailabilities {
        readonly SP_TRACK_AVAILABILITY_UNAVAILABLE: 0;
        readonly SP_TRACK_AVAILABILITY_AVAILABLE: 1;
        readonly SP_TRACK_AVAILABILITY_NOT_STREAMABLE: 2;
        readonly SP_TRACK_AVAILABILITY_BANNED_BY_ARTIST: 3;
    }

    interface ArtistbrowseTypes {
        readonly SP_ARTISTBROWSE_FULL: 0;
        readonly SP_ARTISTBROWSE_NO_TRACKS: 1;
        readonly SP_ARTISTBROWSE_NO_ALBUMS: 2;
    }
    type ArtistbrowseType = ArtistbrowseTypes[keyof ArtistbrowseTypes];

    interface AlbumTypes {
        readonly SP_ALBUMTYPE_ALBUM: 0;
        readonly SP_ALBUMTYPE_SINGLE: 1;
        readonly SP_ALBUMTYPE_COMPILATION: 2;
        readonly SP_ALBUMTYPE_UNKNOWN: 3;
    }
    type AlbumType = AlbumTypes[keyof AlbumTypes];

    interface ImageFormats {
        readonly SP_IMAGE_FORMAT_UNKNOWN: -1;
        readonly SP_IMAGE_FORMAT_JPEG: 0;
    }
    type ImageFormat = ImageFormats[keyof ImageFormats];

    interface RelationTypes {
        readonly SP_RELATION_TYPE_UNKNOWN: 0;
        readonly SP_RELATION_TYPE_NONE: 1;
        readonly SP_RELATION_TYPE_UNIDIRECTIONAL: 2;
        readonly SP_RELATION_TYPE_BIDIRECTIONAL: 3;
    }
    type RelationType = RelationTypes[keyof RelationTypes];

    interface ToplistTypes {
        readonly SP_TOPLIST_TYPE_ARTISTS: 0;
        readonly SP_TOPLIST_TYPE_ALBUMS: 1;
        readonly SP_TOPLIST_TYPE_TRACKS: 2;
    }
    type ToplistType = ToplistTypes[keyof ToplistTypes];

    interface ToplistRegions {
        readonly SP_TOPLIST_REGION_EVERYWHERE: 0;
        readonly SP_TOPLIST_REGION_USER: 1;
    }

    /** Empty. */
    interface SearchTypes {}

    interface PluginErrors {
        readonly SP_PLUGIN_ERROR_OK: 0;
        readonly SP_PLUGIN_ERROR_GENERAL: 1;
        readonly SP_PLUGIN_ERROR_NO_AUDIO: 2;
    }

    /** 0 logged out, 1 logged in, 2 disconnected, 3 undefined, 4 offline. */
    type ConnectionState = 0 | 1 | 2 | 3 | 4;

    /** 0 normal, 1 small, 2 large. */
    type ImageSize = 0 | 1 | 2;
}

// A var, so that `window.Spotify` is one, too.
declare var Spotify: Spotify.Root;
