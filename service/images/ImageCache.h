#ifndef SONOLET_SERVICE_IMAGES_IMAGE_CACHE_H
#define SONOLET_SERVICE_IMAGES_IMAGE_CACHE_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace sonolet::service {

// Finished images as files named by their ids, within a size; what was not used for the longest
// time goes first.
//
// A file appears whole or not at all, so that several processes may share the folder; it is
// readable by its owner alone. Its time of change is that of its last use. Threads: belongs to one
// thread at a time.
class ImageCache final {
public:
    // `folder` need not exist.
    explicit ImageCache(std::string cacheFolder) : folder(std::move(cacheFolder)) {}

    // 0: a tenth of what the disk has free, 256 MiB at most.
    void setLimit(std::uint64_t megabytes);

    // The image, or nothing. A damaged file is taken away.
    // A file that is not whole is taken away and not found.
    std::optional<std::string> find(const std::string& id);

    // Throws std::system_error when the file cannot be written.
    void put(const std::string& id, const std::string& jpeg);

private:
    std::string path(const std::string& id) const;
    std::uint64_t limit(std::uint64_t used) const;
    void shrink();

    const std::string folder;
    std::uint64_t megabytes = 0;
    // What may be written before the folder is looked at again. Half of what is left, since
    // another process may write as well.
    std::uint64_t spaceLeft = 0;
};

}  // namespace sonolet::service

#endif
