#include "server/SoundStore.h"

#include "server/Download.h"
#include "store/Id.h"

#include <glib.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

namespace sonolet::service {

namespace {

namespace fs = std::filesystem;

// What a decoder here plays as it is; an unknown one is tried.
constexpr std::array<const char*, 11> playable = {"",    "flac", "ogg", "oga", "opus", "mp3",
                                                  "m4a", "mp4",  "m4b", "aac", "wav"};

constexpr char madeFormat[] = "mp3";
constexpr std::uint64_t mebibyte = 1 << 20;
constexpr std::uint64_t mostByItself = 4096 * mebibyte;

// Reads a download, which it keeps going.
class CachedSound final : public Sound {
public:
    CachedSound(std::string soundName, std::shared_ptr<Download> soundDownload)
        : name(std::move(soundName)), download(std::move(soundDownload)) {}

    const std::string& path() const override { return name; }
    std::int64_t size() const override { return download->size(); }
    std::size_t read(std::int64_t offset, void* to, std::size_t count) const override {
        return download->read(offset, to, count, awake);
    }
    void wakeReaders(bool wake) const override {
        awake = wake;
        download->wake();
    }

private:
    const std::string name;
    const std::shared_ptr<Download> download;
    mutable std::atomic<bool> awake{false};
};

}  // namespace

SoundStore::SoundStore(Http& network,
                       Subsonic& client,
                       std::string cacheFolder,
                       Log logLine,
                       Subsonic::Watch& connection)
    : http(network), server(client), folder(std::move(cacheFolder)), say(std::move(logLine)),
      tell(connection) {}

void SoundStore::setBitrate(int kilobits, bool always) {
    bitrate = kilobits;
    transcodesAll = always;
}

std::shared_ptr<const Sound>
SoundStore::open(const std::string& name, const std::string& path, std::int64_t size) {
    if (g_mkdir_with_parents(folder.c_str(), S_IRWXU) != 0) {
        throw UnreadableFile("the folder " + folder + " cannot be made");
    }
    const std::size_t dot = path.rfind('.');
    const std::string suffix = dot == std::string::npos ? "" : path.substr(dot + 1);
    Download::Wanted wanted;
    wanted.id = path.substr(0, dot);
    wanted.size = size;
    wanted.isMade =
        transcodesAll || std::find(playable.begin(), playable.end(), suffix) == playable.end();
    if (wanted.isMade) {
        wanted.format = madeFormat;
        wanted.bitrate = bitrate;
    }
    wanted.file =
        folder + '/' +
        Id::digest({wanted.id, suffix, wanted.format, std::to_string(wanted.bitrate)}).text() +
        ".sound";
    std::shared_ptr<Download> download;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        std::weak_ptr<Download>& known = downloads[wanted.file];
        download = known.lock();
        if (download == nullptr) {
            download = std::make_shared<Download>(*this, wanted);
            known = download;
            download->start();
        }
    }
    return std::make_shared<CachedSound>(name, std::move(download));
}

void SoundStore::shrink() {
    struct StoredFile {
        fs::file_time_type used;
        std::uint64_t size;
        fs::path path;
    };
    std::set<std::string> open;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        for (auto download = downloads.begin(); download != downloads.end();) {
            if (download->second.expired()) {
                download = downloads.erase(download);
            } else {
                open.insert((download++)->first);
            }
        }
    }
    std::error_code ignored;
    std::vector<StoredFile> files;
    std::uint64_t sum = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
        if (entry.path().extension() != ".sound") {
            continue;
        }
        const std::uint64_t size = entry.file_size(ignored);
        sum += size;
        if (open.count(entry.path().string()) == 0) {
            files.push_back({entry.last_write_time(ignored), size, entry.path()});
        }
    }
    const std::uint64_t free = fs::space(folder, ignored).available;
    const std::uint64_t limit =
        megabytes > 0 ? megabytes * mebibyte : std::min((free + sum) / 10, mostByItself);
    std::sort(files.begin(), files.end(), [](const StoredFile& left, const StoredFile& right) {
        return left.used < right.used;
    });
    for (const StoredFile& file : files) {
        if (sum <= limit) {
            return;
        }
        fs::remove(file.path, ignored);
        fs::remove(file.path.string() + ".map", ignored);
        sum -= file.size;
    }
}

}  // namespace sonolet::service
