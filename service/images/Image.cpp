#include "images/Image.h"

#include "images/Images.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace sonolet::service {

Image::Image(std::shared_ptr<Images> owner, std::string imageId)
    : images(std::move(owner)), link(std::move(imageId)) {}

Image::~Image() {
    images->shelf.forget(link, this);
}

sp_image* Image::handle() {
    return static_cast<sp_image*>(this);
}

void Image::addCallback(image_loaded_cb* callback, void* userdata) {
    listeners.push_back({callback, userdata, false});
    if (isLoaded()) {
        images->tellLater(link);
    }
}

bool Image::removeCallback(image_loaded_cb* callback, void* userdata) {
    const auto found =
        std::find_if(listeners.begin(), listeners.end(), [&](const Listener& listener) {
            return listener.callback == callback && listener.userdata == userdata;
        });
    if (found == listeners.end()) {
        return false;
    }
    listeners.erase(found);
    return true;
}

void Image::finish(sp_error error, const std::string& loadedJpeg) {
    if (!isLoaded()) {
        outcome = error;
        jpeg = loadedJpeg;
    }
    tell();
}

void Image::tell() {
    if (!isLoaded()) {
        return;
    }
    // A callback may add and remove others, and release the session. Who is added now is told
    // later.
    std::vector<Listener> due;
    std::copy_if(listeners.begin(), listeners.end(), std::back_inserter(due),
                 [](const Listener& listener) { return !listener.told; });
    for (const Listener& listener : due) {
        const auto untold =
            std::find_if(listeners.begin(), listeners.end(), [&](const Listener& present) {
                return present.callback == listener.callback &&
                       present.userdata == listener.userdata && !present.told;
            });
        if (untold != listeners.end() && !images->isClosed()) {
            untold->told = true;
            listener.callback(handle(), listener.userdata);
        }
    }
}

}  // namespace sonolet::service
