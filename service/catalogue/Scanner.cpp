#include "catalogue/Scanner.h"

#include "music/PlaylistFile.h"

#include <dirent.h>
#include <glib.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <vector>

namespace sonolet::service {

namespace {

constexpr std::size_t filesInBatch = 128;
constexpr std::chrono::milliseconds batchTime(300);
constexpr std::chrono::seconds reportTime(1);

// In the order in which they are preferred.
constexpr std::array<const char*, 6> pictureNames = {"cover.jpg",  "cover.jpeg",  "cover.png",
                                                     "folder.jpg", "folder.jpeg", "folder.png"};

struct Entry {
    std::string name;
    struct stat status;
};

std::string reason(int error) {
    return std::error_code(error, std::generic_category()).message();
}

FileStamp stampOf(const struct stat& status) {
    constexpr std::int64_t nanoseconds = 1000000000;
    return {status.st_size, status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec};
}

// A folder's entries in the order of their names, hidden ones and what cannot be looked at left
// out. Throws std::system_error, also when they cannot be read to their end.
std::vector<Entry> listFolder(const std::string& path) {
    DIR* folder = opendir(path.c_str());
    if (folder == nullptr) {
        throw std::system_error(errno, std::generic_category());
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> closing(folder, &closedir);
    std::vector<Entry> entries;
    // No other thread reads this stream.
    for (;;) {
        errno = 0;
        const dirent* found = readdir(folder);  // NOLINT(concurrency-mt-unsafe)
        if (found == nullptr && errno != 0) {
            throw std::system_error(errno, std::generic_category());
        }
        if (found == nullptr) {
            break;
        }
        Entry entry{found->d_name, {}};
        if (entry.name.front() != '.' &&
            fstatat(dirfd(folder), found->d_name, &entry.status, 0) == 0) {
            entries.push_back(std::move(entry));
        }
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry& left, const Entry& right) { return left.name < right.name; });
    return entries;
}

std::string pictureOf(const std::vector<Entry>& entries) {
    for (const char* wanted : pictureNames) {
        for (const Entry& entry : entries) {
            if (g_ascii_strcasecmp(entry.name.c_str(), wanted) == 0 &&
                S_ISREG(entry.status.st_mode)) {
                return entry.name;
            }
        }
    }
    return {};
}

std::string pictureDigest(const std::string& picture) {
    return picture.empty() ? std::string() : sha1(picture).substr(0, pictureDigestSize);
}

std::string inFolder(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + '/' + name;
}

}  // namespace

bool isFolderPicture(const std::string& name) {
    return std::any_of(pictureNames.begin(), pictureNames.end(), [&](const char* wanted) {
        return g_ascii_strcasecmp(name.c_str(), wanted) == 0;
    });
}

Scanner::Scanner(std::string musicFolder,
                 std::string catalogueFile,
                 ScanEvents scanEvents,
                 Pass whichPass)
    : music(std::move(musicFolder)), file(std::move(catalogueFile)), events(std::move(scanEvents)),
      pass(whichPass), thread([this] { run(); }) {}

Scanner::~Scanner() {
    stopping = true;
    thread.join();
}

void Scanner::run() {
    try {
        scan();
    } catch (const std::exception& error) {
        complete = false;
        events.log("The scan of " + music + " was given up: " + error.what());
    }
    writer.reset();
    if (!stopping) {
        events.finished(complete);
    }
}

void Scanner::scan() {
    try {
        scanOnce();
    } catch (const DatabaseError& error) {
        if (!error.damaged()) {
            throw;
        }
        writer.reset();
        events.log(setCatalogueAside(error));
        scanOnce();
    }
}

void Scanner::scanOnce() {
    batch = ScanBatch();
    counts = Counts();
    visited.clear();
    foldersWithMusic.clear();
    playlistFiles.clear();
    complete = true;
    const Clock::time_point start = Clock::now();
    lastFlush = start;
    lastReport = start;
    if (pass == Pass::first) {
        events.log("Scanning " + music);
    }
    writer = std::make_unique<CatalogueWriter>(file);
    struct stat begun {};
    if (stat(music.c_str(), &begun) == 0) {
        visited.emplace(begun.st_dev, begun.st_ino);
    }
    scanFolder("");
    if (struct stat status{}; complete && !stopping &&
                              (stat(music.c_str(), &status) != 0 || status.st_dev != begun.st_dev ||
                               status.st_ino != begun.st_ino)) {
        events.log("The folder " + music + " has gone while it was scanned");
        complete = false;
    }
    if (complete && !stopping) {
        loseFolders();
    }
    flush();
    if (stopping) {
        return;
    }
    if (!complete) {
        events.log("What was known of " + music + " stays known");
        return;
    }
    if (pass == Pass::first || counts.added + counts.changed + counts.removed > 0) {
        reportResult(Clock::now() - start);
    }
    if (events.playlistFiles) {
        events.playlistFiles(playlistFiles, stopping);
    }
}

void Scanner::reportResult(std::chrono::duration<double> taken) {
    char seconds[32];
    std::snprintf(seconds, sizeof(seconds), "%.2f", taken.count());
    events.log("Scanned " + music + " in " + seconds +
               " s: " + std::to_string(writer->presentTracks()) + " tracks, " +
               std::to_string(counts.added) + " new, " + std::to_string(counts.changed) +
               " changed, " + std::to_string(counts.removed) + " removed, " +
               std::to_string(counts.skipped) + " skipped");
}

void Scanner::scanFolder(const std::string& path) {
    std::vector<Entry> entries;
    try {
        entries = listFolder(absolute(path));
    } catch (const std::system_error& error) {
        events.log("Cannot read the folder " + absolute(path) + ": " +
                   reason(error.code().value()));
        // A disk that is not there has taken nothing away.
        complete = complete && !path.empty();
        return;
    }
    const auto isMusic = [](const Entry& entry) {
        return S_ISREG(entry.status.st_mode) && isMusicFile(entry.name);
    };
    if (std::any_of(entries.begin(), entries.end(), isMusic)) {
        foldersWithMusic.insert(path);
        KnownFolder known = writer->folder(path);
        if (!known.present) {
            batch.foldersFound.push_back(path);
        }
        lookAtPicture(path, known, pictureOf(entries));
        for (const Entry& entry : entries) {
            if (stopping) {
                return;
            }
            if (isMusic(entry)) {
                lookAtFile(path, entry.name, stampOf(entry.status), known);
                known.files.erase(entry.name);
            }
        }
        for (const auto& [name, gone] : known.files) {
            if (gone.track == 0) {
                batch.unskipped.emplace_back(path, name);
            } else if (gone.present) {
                batch.vanished.push_back(gone.track);
                ++counts.removed;
            }
        }
    }
    for (const Entry& entry : entries) {
        if (stopping) {
            return;
        }
        if (S_ISREG(entry.status.st_mode) && PlaylistFile::isOne(entry.name)) {
            playlistFiles.push_back(inFolder(path, entry.name));
        }
        // A folder that a symbolic link leads back to is scanned once.
        if (S_ISDIR(entry.status.st_mode) &&
            visited.emplace(entry.status.st_dev, entry.status.st_ino).second) {
            scanFolder(inFolder(path, entry.name));
        }
    }
}

void Scanner::lookAtPicture(const std::string& path,
                            const KnownFolder& known,
                            const std::string& name) {
    FolderPicture picture;
    picture.name = name;
    struct stat status {};
    const std::string picturePath = absolute(inFolder(path, name));
    if (name.empty() || stat(picturePath.c_str(), &status) != 0) {
        picture.name.clear();
    } else {
        picture.stamp = stampOf(status);
    }
    if (picture.name == known.picture.name && picture.stamp == known.picture.stamp) {
        return;
    }
    if (!picture.name.empty()) {
        try {
            const MusicFile picturesFile(picturePath);
            picture.stamp = stampOf(picturesFile.status());
            if (picturesFile.size() <= largestPicture) {
                picture.digest = pictureDigest(picturesFile.contents(largestPicture));
            }
        } catch (const UnreadableFile&) {
            return;  // the next scan looks again
        }
    }
    batch.pictures.emplace_back(path, std::move(picture));
}

void Scanner::lookAtFile(const std::string& path,
                         const std::string& name,
                         const FileStamp& stamp,
                         const KnownFolder& known) {
    ++counts.files;
    const auto before = known.files.find(name);
    if (before != known.files.end() && before->second.stamp == stamp) {
        if (before->second.track == 0) {
            ++counts.skipped;
        } else if (!before->second.present) {
            batch.appeared.push_back(before->second.track);
            ++counts.added;
        }
        reportProgress();
        return;
    }
    ScannedFile scanned{path, name, stamp, {}, {}};
    bool opened = false;
    try {
        const MusicFile musicFile(absolute(inFolder(path, name)));
        opened = true;
        scanned.stamp = stampOf(musicFile.status());
        scanned.tags = readTags(musicFile, stopping);
        scanned.pictureDigest = pictureDigest(scanned.tags->picture);
        // The bytes of a batch's pictures would be many.
        scanned.tags->picture = std::string();
        ++(before == known.files.end() ? counts.added : counts.changed);
    } catch (const UnreadableFile& error) {
        if (stopping) {
            return;
        }
        events.log("Skipped " + absolute(inFolder(path, name)) + ": " + error.what());
        ++counts.skipped;
    }
    // What could not be opened may be there again as it was: the next scan looks again.
    if (opened) {
        batch.files.push_back(std::move(scanned));
    }
    reportProgress();
    if (batch.files.size() >= filesInBatch || Clock::now() - lastFlush >= batchTime) {
        flush();
    }
}

void Scanner::loseFolders() {
    for (const std::string& path : writer->folders()) {
        if (foldersWithMusic.count(path) == 0) {
            for (const auto& [name, gone] : writer->folder(path).files) {
                counts.removed += gone.track != 0 && gone.present ? 1 : 0;
            }
            batch.foldersLost.push_back(path);
        }
    }
}

void Scanner::reportProgress() {
    const Clock::time_point now = Clock::now();
    if (now - lastReport >= reportTime) {
        lastReport = now;
        events.log("Scanning " + music + ": " + std::to_string(counts.files) + " files so far");
    }
}

void Scanner::flush() {
    if (!batch.empty()) {
        writer->apply(batch);
        batch = ScanBatch();
    }
    lastFlush = Clock::now();
}

std::string Scanner::absolute(const std::string& path) const {
    return path.empty() ? music : music + '/' + path;
}

}  // namespace sonolet::service
