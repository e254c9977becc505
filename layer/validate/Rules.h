#ifndef SONOLET_LAYER_VALIDATE_RULES_H
#define SONOLET_LAYER_VALIDATE_RULES_H

// What the headers of platform/ ask of each side. Numbers stay what they are: 1xx are for all
// interfaces and jsplugin.h, 2xx for libspotify/api.h, 3xx for uva.h.
struct Rule {
    int number;
    const char* says;
};

// In the order of their numbers. docs/integration.md has them for readers; a rule that goes leaves
// its number unused, for findings are compared across versions.
constexpr Rule rules[] = {
    {101, "a text is UTF-8"},
    {102, "the host's table has every function"},
    {103, "the interface is used on the script thread alone"},
    {104, "an object is not used once it has been destroyed"},
    {105, "an object is destroyed once"},
    {106, "an object is not destroyed inside a call on it"},
    {107, "an answer is one of the codes that there are"},
    {108, "a value has a type that there is, and what the type says"},
    {109, "arguments come in an array of as many as are told"},
    {110, "a poll comes in time"},
    {111, "a poll is not called inside itself"},
    {112, "a poll that has ended, or whose document has gone, is not called"},
    {113, "an unload listener is called once"},
    {114, "nothing is made in a document that has gone"},
    {115, "a document is opened once"},
    {116, "objects are marked inside a trace"},
    {201, "the library is used on one thread"},
    {202, "no handle is NULL"},
    {203, "a handle is one that the library has given, of its kind, and still valid"},
    {204, "a handle is given back no more often than it was taken"},
    {205, "every handle but links that was taken is given back before the session goes"},
    {206, "the session is not used once it has been released"},
    {207, "events are not processed inside a callback"},
    {208, "a callback comes on its thread, and while events are processed"},
    {209, "no callback comes once the session has been released"},
    {210, "a query is answered once, and not after its release"},
    {211, "a registration that was taken away is not called"},
    {212, "a registration is taken away once"},
    {213, "a query is answered within a minute"},
    {214, "sound is delivered one block at a time"},
    {215, "nothing is delivered of a track that is not loaded and playing"},
    {216, "no more frames are taken than were delivered"},
    {217, "a delivery has a format and a number of frames"},
    {218, "a result is one that there can be"},
    {219, "subscribers are given back once"},
    {301, "the backend is used on the client's thread"},
    {302, "a backend is not used, and not released, once it has been released"},
    {303, "no event comes once the backend has been released"},
    {304, "a request is answered once"},
    {305, "a request is answered with no more than it asked for"},
    {306, "a request is answered before those after it"},
    {307, "nothing is written after the end of the stream"},
    {308, "a request has a size and a place for its data"},
    {309, "a backend gets a client and a source"},
    {310, "a position is a number of seconds that does not lie below 0"},
};

#endif
