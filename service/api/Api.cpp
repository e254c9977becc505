#include "api/Api.h"

#include <glib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

namespace sonolet::service {

sp_error explain() noexcept {
    try {
        throw;
    } catch (const ServiceError& error) {
        std::fprintf(stderr, "libspotify: %s\n", error.what());
        return error.number();
    } catch (const DatabaseError& error) {
        std::fprintf(stderr, "libspotify: %s\n", error.what());
        if (const std::shared_ptr<Session> session = currentSession()) {
            session->rebuildDamaged(error);
        }
        return error.passing() ? SP_ERROR_OTHER_TRANSIENT : SP_ERROR_OTHER_PERMANENT;
    } catch (const std::bad_alloc&) {
        std::fputs("libspotify: out of memory\n", stderr);
        return SP_ERROR_OTHER_TRANSIENT;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "libspotify: %s\n", error.what());
        return SP_ERROR_OTHER_PERMANENT;
    } catch (...) {
        std::fputs("libspotify: unknown failure\n", stderr);
        return SP_ERROR_OTHER_PERMANENT;
    }
}

int copyText(const std::string& text, char* buffer, std::size_t size) noexcept {
    if (buffer != nullptr && size > 0) {
        std::size_t length = std::min(text.size(), size - 1);
        // Not through the middle of a character.
        while (length < text.size() && length > 0 && (text[length] & 0xc0) == 0x80) {
            --length;
        }
        std::memcpy(buffer, text.data(), length);
        buffer[length] = '\0';
    }
    return static_cast<int>(text.size());
}

}  // namespace sonolet::service

const char* sp_build_id(void) {
    return "12.1.0 Sonolet local music service";
}

const char* sp_error_message(sp_error error) {
    switch (error) {
    case SP_ERROR_OK:
        return "No error";
    case SP_ERROR_BAD_API_VERSION:
        return "Invalid library version";
    case SP_ERROR_API_INITIALIZATION_FAILED:
        return "The library could not be initialised";
    case SP_ERROR_TRACK_NOT_PLAYABLE:
        return "The track cannot be played";
    case SP_ERROR_BAD_APPLICATION_KEY:
        return "The application key is invalid";
    case SP_ERROR_BAD_USERNAME_OR_PASSWORD:
        return "Wrong user name or password";
    case SP_ERROR_USER_BANNED:
        return "The user is banned";
    case SP_ERROR_UNABLE_TO_CONTACT_SERVER:
        return "The service cannot be reached";
    case SP_ERROR_CLIENT_TOO_OLD:
        return "The client is too old";
    case SP_ERROR_OTHER_PERMANENT:
        return "A permanent error";
    case SP_ERROR_BAD_USER_AGENT:
        return "The user agent is empty or too long";
    case SP_ERROR_MISSING_CALLBACK:
        return "A required callback is missing";
    case SP_ERROR_INVALID_INDATA:
        return "Invalid input";
    case SP_ERROR_INDEX_OUT_OF_RANGE:
        return "The index is out of range";
    case SP_ERROR_USER_NEEDS_PREMIUM:
        return "The user needs a premium account";
    case SP_ERROR_OTHER_TRANSIENT:
        return "A transient error";
    case SP_ERROR_IS_LOADING:
        return "Still loading";
    case SP_ERROR_NO_STREAM_AVAILABLE:
        return "There is no stream to play";
    case SP_ERROR_PERMISSION_DENIED:
        return "Permission denied";
    case SP_ERROR_INBOX_IS_FULL:
        return "The inbox is full";
    case SP_ERROR_NO_CACHE:
        return "There is no cache";
    case SP_ERROR_NO_SUCH_USER:
        return "There is no such user";
    case SP_ERROR_NO_CREDENTIALS:
        return "There are no stored credentials";
    case SP_ERROR_NETWORK_DISABLED:
        return "The network is disabled";
    case SP_ERROR_INVALID_DEVICE_ID:
        return "The device id is invalid";
    case SP_ERROR_CANT_OPEN_TRACE_FILE:
        return "The trace file cannot be opened";
    case SP_ERROR_APPLICATION_BANNED:
        return "The application is banned";
    case SP_ERROR_HOST_NOT_FOUND:
        return "The host was not found";
    case SP_ERROR_TIMEOUT:
        return "Timed out";
    case SP_ERROR_ACCESS_DENIED:
        return "Access denied";
    case SP_ERROR_OFFLINE_TOO_MANY_TRACKS:
        return "Too many tracks are kept offline";
    case SP_ERROR_OFFLINE_DISK_CACHE:
        return "The offline cache cannot be used";
    case SP_ERROR_OFFLINE_EXPIRED:
        return "The offline key has expired";
    case SP_ERROR_OFFLINE_NOT_ALLOWED:
        return "Offline use is not allowed";
    case SP_ERROR_OFFLINE_LICENSE_LOST:
        return "The offline licence was lost";
    case SP_ERROR_OFFLINE_LICENSE_ERROR:
        return "The offline licence is invalid";
    }
    return "Unknown error";
}
