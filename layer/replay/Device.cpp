// The recorded media backend and log, and where the plug-in waits for itself.

#include "replay/Parts.h"
#include "replay/Sound.h"

#include "kellog.h"
#include "uva.h"

#include <pthread.h>

#include <atomic>
#include <climits>
#include <mutex>
#include <unordered_map>

using nlohmann::json;

namespace {

// ---- The media backend ----

// By the recorded address, what the plug-in is called by. A request for a backend goes on beside
// the step of another thread, so it does not come by turns.
std::mutex clientsMutex;
std::unordered_map<Twins::Address, UVAClient*> clients;

class Backend final : public UVABackend {
public:
    int setSource(const char*, SourceDescription**, int) override {
        sound.restart();
        return replayer().answered<int>();
    }
    void play() override { replayer().answered(); }
    void pause(int) override { replayer().answered(); }
    void getPosition(double& position) override { position = replayer().answered<double>(); }
    void writeData(NeedDataEvent* event, unsigned size, WriteDataStatus) override {
        if (!sound.isInOrder(event->data, size)) {
            replayer().differ("sound as it was delivered",
                              std::to_string(size) + " bytes with a gap or out of order");
        }
        replayer().answered();
        delete[] event->data;
        delete event;
    }

private:
    SoundCheck sound;
};

// Never freed: the plug-in may call late.
UVABackend* request(UVABackend::UVABackendType, UVAClient* client) {
    replayer().reading([&] {
        const Twins::Address address = Twins::address(replayer().argumentsOfNext().at(1));
        const std::lock_guard<std::mutex> lock(clientsMutex);
        clients[address] = client;
    });
    return replayer().answered<bool>() ? new Backend : nullptr;
}

void release(UVABackend*) {
    replayer().answered();
}

UVAClient& clientIn(const json& value) {
    const Twins::Address address = Twins::address(value);
    const std::lock_guard<std::mutex> lock(clientsMutex);
    const auto found = clients.find(address);
    if (found == clients.end() || found->second == nullptr) {
        throw NotReplayable("the plug-in has given no such client");
    }
    return *found->second;
}

void handleEvent(const json& in) {
    UVAClient& client = clientIn(in.at(0));
    const auto type = in.at(2).get<unsigned>();
    if (type == 1) {
        auto* const request = new NeedDataEvent(in.at(3).get<unsigned>(), in.at(4).get<unsigned>());
        replayer().twins.pair(Twins::address(in.at(1)), request);
        client.handleEvent(request);
    } else if (type == 6) {
        VideoResizedEvent event(in.at(3).get<int>(), in.at(4).get<int>(), in.at(5).get<double>());
        client.handleEvent(&event);
    } else {
        UVAEvent event(type);
        client.handleEvent(&event);
    }
}

// ---- The log ----

void logLine(KlogContext*, int, const char*, int, const char*, ...) {
    replayer().answered();
}

// What the log answered is in the recording when it has changed.
int threshold(const KlogContext*) {
    static std::atomic<int> now{INT_MIN};
    const json next = replayer().answerOfNext(Fn::threshold);
    if (!next.empty()) {
        now = replayer().reading([&] { return next[0].get<int>(); });
    }
    return now;
}

// ---- The plug-in's own threads ----

int lock(pthread_mutex_t* mutex) {
    replayer().answered();
    return pthread_mutex_lock(mutex);
}

// Who waits is woken when the recording says so; the plug-in looks for itself what it waited for.
int wait(pthread_cond_t*, pthread_mutex_t* mutex) {
    pthread_mutex_unlock(mutex);
    replayer().answered();
    return pthread_mutex_lock(mutex);
}

}  // namespace

void* replayedDevice(const std::string& symbol) {
    static const auto& all = *new std::unordered_map<std::string, void*>{
        {"_ZN10UVAFactory14requestBackendEN10UVABackend14UVABackendTypeEP9UVAClient",
         reinterpret_cast<void*>(&request)},
        {"_ZN10UVAFactory14releaseBackendEP10UVABackend", reinterpret_cast<void*>(&release)},
        {"KlogPrintf", reinterpret_cast<void*>(&logLine)},
        {"_ZNK11KlogContext9thresholdEv", reinterpret_cast<void*>(&threshold)},
        {"pthread_mutex_lock", reinterpret_cast<void*>(&lock)},
        {"pthread_cond_wait", reinterpret_cast<void*>(&wait)},
    };
    const auto found = all.find(symbol);
    return found != all.end() ? found->second : nullptr;
}

void addDeviceCalls() {
    replayer().invoke(Fn::handleEvent, &handleEvent);
    replayer().invoke(Fn::getDRMBackend, [](const json& in) {
        clientIn(in.at(0)).getDRMBackend(replayer().twins.text(in.at(1)));
    });
}

// The plug-in looks for the factory in its process.
UVABackend* UVAFactory::requestBackend(UVABackend::UVABackendType, UVAClient*) {
    return nullptr;
}
void UVAFactory::releaseBackend(UVABackend*) {}
