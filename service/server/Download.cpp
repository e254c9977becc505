#include "server/Download.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <utility>

namespace sonolet::service {

namespace {

// What is as near as this is waited for instead of asked for anew.
constexpr std::int64_t nearBytes = 512 << 10;
constexpr std::size_t longestRefusal = 64 << 10;

constexpr std::chrono::milliseconds firstPause{500};
constexpr std::chrono::milliseconds longestPause{4000};

std::string contentsOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

void Spans::add(std::int64_t from, std::int64_t to) {
    auto span = spans.upper_bound(from);
    if (span != spans.begin() && std::prev(span)->second >= from) {
        --span;
        from = span->first;
    }
    while (span != spans.end() && span->first <= to) {
        to = std::max(to, span->second);
        span = spans.erase(span);
    }
    spans[from] = to;
}

std::int64_t Spans::firstMissing(std::int64_t place) const {
    const auto behind = spans.upper_bound(place);
    return behind == spans.begin() ? place : std::max(place, std::prev(behind)->second);
}

std::string Spans::asText() const {
    std::string text;
    for (const auto& [from, to] : spans) {
        text += std::to_string(from) + ' ' + std::to_string(to) + '\n';
    }
    return text;
}

Spans Spans::fromText(const std::string& text) {
    Spans read;
    std::istringstream stream(text);
    for (std::int64_t from = 0, to = 0; stream >> from >> to;) {
        if (from >= 0 && to > from) {
            read.add(from, to);
        }
    }
    return read;
}

Download::Download(SoundStore& soundStore, Wanted what)
    : store(soundStore), wanted(std::move(what)),
      file(::open(wanted.file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
    if (file.get() < 0) {
        throw UnreadableFile(wanted.file + ": " + std::generic_category().message(errno));
    }
    futimens(file.get(), nullptr);  // used now; which goes first is all that depends on it
    std::istringstream map(contentsOf(wanted.file + ".map"));
    if (map >> total && std::getline(map, etag) && std::getline(map, etag)) {
        there = Spans::fromText({std::istreambuf_iterator<char>(map), {}});
        struct stat status {};
        if (fstat(file.get(), &status) != 0 || status.st_size < there.end()) {
            there.clear();
        }
    } else {
        total = -1;
        etag.clear();
    }
}

Download::~Download() {
    if (transfer != nullptr) {
        store.network().cancel(transfer);
    }
    const std::string map = wanted.file + ".map";
    const FileDescriptor parts(
        ::open(map.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR));
    // What the server makes cannot be gone on with.
    const bool isOfUse = isPart || isWhole();
    const std::string text = std::to_string(total) + '\n' + etag + '\n' + there.asText();
    if (!isOfUse || parts.get() < 0 || !writeFile(parts.get(), text)) {
        unlink(map.c_str());
    }
}

void Download::start() {
    const Lock lock(mutex);
    isPart = !wanted.isMade;
    if (!isWhole()) {
        fetch(isPart ? there.firstMissing(0) : 0);
    }
}

std::int64_t Download::size() const {
    const Lock lock(mutex);
    return total >= 0 || wanted.isMade ? total : wanted.size;
}

void Download::wake() {
    { const Lock lock(mutex); }
    changed.notify_all();
}

std::size_t
Download::read(std::int64_t offset, void* to, std::size_t count, const std::atomic<bool>& givenUp) {
    Lock lock(mutex);
    std::int64_t end = 0;
    for (;;) {
        if (givenUp) {
            throw ReadEnded();
        }
        end = offset + static_cast<std::int64_t>(count);
        end = total >= 0 ? std::min(end, total) : end;
        if (end <= offset || there.firstMissing(offset) >= end) {
            break;
        }
        if (!failure.empty()) {
            throw UnreadableFile(failure);
        }
        demand(there.firstMissing(offset));
        changed.wait(lock);
    }
    lock.unlock();
    std::size_t done = 0;
    const auto size = static_cast<std::size_t>(std::max<std::int64_t>(end - offset, 0));
    while (done < size) {
        const ssize_t got = pread(file.get(), static_cast<char*>(to) + done, size - done,
                                  offset + static_cast<std::int64_t>(done));
        if (got < 0 && errno != EINTR) {
            throw UnreadableFile(std::generic_category().message(errno));
        }
        if (got == 0) {
            throw UnreadableFile("the cache has lost a part of it");
        }
        done += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    return done;
}

// ---- Fetching: under the lock, unless it says otherwise ----

// Sees to it that this byte comes soon.
void Download::demand(std::int64_t offset) {
    const bool comesSoon = offset >= place && offset < place + nearBytes;
    if (!isPart || next == offset || (transfer != nullptr && comesSoon)) {
        return;
    }
    next = offset;
    if (transfer != nullptr) {
        store.network().cancel(transfer);
    }
}

void Download::fetch(std::int64_t from) {
    place = from;
    next = -1;
    begun = Subsonic::Clock::now();
    refusal.clear();
    isRefusal = false;
    Subsonic::Parameters parameters = {{"id", wanted.id}};
    if (wanted.isMade) {
        parameters.emplace_back("format", wanted.format);
        parameters.emplace_back("maxBitRate", std::to_string(wanted.bitrate));
    } else if (asStream) {
        parameters.emplace_back("format", "raw");
    }
    const bool asDownload = !wanted.isMade && !asStream;
    HttpRequest request;
    try {
        request.url = store.client().url(asDownload ? "download" : "stream", parameters);
    } catch (const ServerError& error) {
        giveUp(error.what());
        return;
    }
    request.from = isPart ? from : 0;
    request.ifRange = etag;
    // The network's thread keeps nothing alive that nobody reads.
    const std::weak_ptr<Download> self = weak_from_this();
    Http::Listener listener;
    listener.head = [self](const HttpHead& received) {
        const auto living = self.lock();
        return living != nullptr && living->begins(received);
    };
    listener.bytes = [self](const char* bytes, std::size_t count) {
        const auto living = self.lock();
        return living != nullptr && living->comes(bytes, count);
    };
    listener.over = [self](const HttpError* error) {
        if (const auto living = self.lock()) {
            living->isOver(error);
        }
    };
    transfer = store.network().begin(std::move(request), std::move(listener));
}

// The network's thread, without the lock.
bool Download::begins(const HttpHead& received) {
    const Lock lock(mutex);
    head = received;
    // Errors come as text, whatever the status.
    const bool isText = head.type == "application/json" || head.type == "text/json" ||
                        head.type == "text/xml" || head.type == "application/xml";
    isRefusal = isText || head.status < 200 || head.status >= 300;
    if (isRefusal) {
        return true;
    }
    const bool isOther = (total >= 0 && head.total >= 0 && head.total != total) ||
                         (!etag.empty() && !head.etag.empty() && head.etag != etag);
    if (isOther) {
        there.clear();
    }
    etag = head.etag;
    constexpr int part = 206;
    place = head.status == part ? head.from : 0;
    if (head.total >= 0) {
        total = head.total;
    } else if (head.status != part) {
        isPart = false;
    }
    changed.notify_all();
    return true;
}

// The network's thread, without the lock.
bool Download::comes(const char* bytes, std::size_t count) {
    const Lock lock(mutex);
    if (isRefusal) {
        refusal.append(bytes, std::min(count, longestRefusal - refusal.size()));
        return refusal.size() < longestRefusal;
    }
    std::size_t done = 0;
    while (done < count) {
        const ssize_t put =
            pwrite(file.get(), bytes + done, count - done, place + static_cast<std::int64_t>(done));
        if (put < 0 && errno != EINTR) {
            giveUp("the cache: " + std::generic_category().message(errno));
            return false;
        }
        done += put > 0 ? static_cast<std::size_t>(put) : 0;
    }
    there.add(place, place + static_cast<std::int64_t>(count));
    place += static_cast<std::int64_t>(count);
    pause = {};
    changed.notify_all();
    // What is there already need not come again.
    return !isPart || there.firstMissing(place) == place || place == total;
}

// The network's thread, without the lock.
void Download::isOver(const HttpError* error) {
    bool whole = false;
    std::optional<ServerError> failed;
    bool isWell = false;
    Subsonic::Clock::time_point asked;
    {
        const Lock lock(mutex);
        transfer.reset();
        asked = begun;
        if (!failure.empty()) {
            return;
        }
        if (isRefusal) {
            failed = Subsonic::errorOf(head, refusal);
            if (!failed) {
                failed.emplace(SP_ERROR_OTHER_PERMANENT, "the server sends no music", false);
            }
        } else if (error != nullptr && error->kind() != HttpError::Kind::stopped) {
            failed = Subsonic::errorOf(*error, store.client().address().base);
        } else if (error != nullptr && next < 0) {
            return;  // the session ends
        }
        isWell = !failed && error == nullptr;
        if (isWell && total < 0) {
            total = place;
        }
        if (failed && failed->code() == 50 && !wanted.isMade && !asStream) {
            asStream = true;
            failed.reset();
            fetch(there.firstMissing(0));
        } else if (failed && (failed->isLost() || failed->number() == SP_ERROR_OTHER_TRANSIENT)) {
            retry(*failed);
        } else if (failed) {
            giveUp(failed->what());
            failed.reset();
        } else {
            goOn();
        }
        whole = isWhole();
    }
    changed.notify_all();
    if (failed && failed->isLost()) {
        const ServerError lost(*failed);
        store.watch().failed(lost);
    } else if (isWell) {
        store.watch().answered(asked);
    }
    if (whole) {
        store.shrink();
    }
}

// With what is waited for, or with the first that is missing.
void Download::goOn() {
    if (isWhole()) {
        return;
    }
    const std::int64_t missing = there.firstMissing(next >= 0 ? next : place);
    fetch(total >= 0 && missing >= total ? there.firstMissing(0) : missing);
}

void Download::retry(const ServerError& error) {
    store.log()(wanted.id + " is interrupted: " + error.what());
    pause = pause.count() == 0 ? firstPause : std::min(pause * 2, longestPause);
    if (!isPart) {
        // Nothing of it can be gone on with; it comes again from its start.
        there.clear();
    }
    store.network().after(pause, [self = weak_from_this()] {
        if (const auto living = self.lock()) {
            const Lock lock(living->mutex);
            if (living->transfer == nullptr && living->failure.empty()) {
                living->goOn();
            }
        }
    });
}

void Download::giveUp(const std::string& why) {
    failure = why;
    changed.notify_all();
}

}  // namespace sonolet::service
