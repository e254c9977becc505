#ifndef SONOLET_SERVICE_IMAGES_IMAGES_H
#define SONOLET_SERVICE_IMAGES_IMAGES_H

#include "images/Image.h"
#include "images/ImageLoader.h"
#include "objects/Library.h"
#include "objects/Shelf.h"
#include "threads/EventQueue.h"
#include "threads/Worker.h"

#include <functional>
#include <memory>
#include <set>
#include <string>

namespace sonolet::service {

// The images of a session: one handle for each id, loaded on the worker.
//
// Threads: the owner's, except that handles come and go on any. Image handles may outlive the
// session: they keep this object, which after close() loads and tells nothing.
class Images final : public std::enable_shared_from_this<Images> {
public:
    // Leaves what is for the session's owner with it.
    using Post = std::function<void(EventQueue::Event)>;

    // All must live until close().
    Images(std::unique_ptr<ImageLoader> imageLoader,
           std::shared_ptr<Library> sessionLibrary,
           Worker& sessionWorker,
           Post answerLater,
           ImageLoader::Log logLine);

    Images(const Images&) = delete;
    Images& operator=(const Images&) = delete;

    // `id` is 20 bytes, known or not. The handle is there at once and loads by itself; while a scan
    // goes on, one that is not found is not given up. Empty after close().
    Ref<sp_image> image(const std::string& id);
    // 0: as much as seems right.
    void setCacheSize(std::uint64_t megabytes);

    // The worker looks for pictures there from here on.
    void setCatalogue(const std::string& catalogueFile);

    // Looks again for what was not there.
    void catalogueChanged();

    // To be called when the worker has ended.
    void close();
    bool isClosed() const { return closed; }

private:
    friend class Image;

    // What the worker has to say of an id.
    struct Outcome {
        bool found = true;
        sp_error error = SP_ERROR_OK;
        std::string jpeg;
    };

    // Has the worker look for it.
    void request(const std::string& id);
    Outcome load(const std::string& id);
    void finish(const std::string& id, const Outcome& outcome, bool mayAppear);
    void tellLater(const std::string& id);

    // Constant after construction.
    const std::unique_ptr<ImageLoader> loader;  // the worker's
    const std::shared_ptr<Library> library;
    Worker& worker;
    const Post answer;
    const ImageLoader::Log log;

    Shelf<std::string, sp_image> shelf;

    // State below is the owner thread's.
    std::set<std::string> missing;  // not found so far, while a scan goes on
    bool closed = false;
};

}  // namespace sonolet::service

#endif
