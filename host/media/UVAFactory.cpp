#include "LogLine.h"
#include "MediaBackend.h"

#include "uva.h"

#include <map>
#include <memory>
#include <mutex>

namespace {

struct Registry {
    std::mutex mutex;
    std::map<const UVABackend*, std::shared_ptr<MediaBackend>> backends;
};

// Never freed: a plug-in may release its backend in a static destructor.
Registry& registry() {
    static Registry* const instance = new Registry;
    return *instance;
}

}  // namespace

UVABackend* UVAFactory::requestBackend(UVABackend::UVABackendType type, UVAClient* client) {
    if (type != UVABackend::UVA_BACKEND_MEDIA || client == nullptr) {
        logLine("no backend of type " + std::to_string(type) +
                (client == nullptr ? " without a client" : "; type 1 is the media backend"));
        return nullptr;
    }
    auto backend = std::make_shared<MediaBackend>(*client);
    const std::lock_guard<std::mutex> lock(registry().mutex);
    return (registry().backends[backend.get()] = backend).get();
}

void UVAFactory::releaseBackend(UVABackend* backend) {
    std::shared_ptr<MediaBackend> owned;
    {
        const std::lock_guard<std::mutex> lock(registry().mutex);
        const auto found = registry().backends.find(backend);
        if (found != registry().backends.end()) {
            owned = std::move(found->second);
            registry().backends.erase(found);
        }
    }
    if (owned) {
        owned->close();
    } else if (backend != nullptr) {
        logLine("a backend is released that was not requested or is released already");
    }
}
