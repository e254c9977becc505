#ifndef SONOLET_SP_IMAGE_H
#define SONOLET_SP_IMAGE_H

#include "Wrapper.h"
#include "jspp/orvo/shared_ptr.h"

#include <set>

// A picture: a cover or a portrait, as script sees it. Made by Factory. Its id and its data travel
// in Base64.
class SpImage final : public Wrapper<sp_image>, public orvo::enable_shared_from_this<SpImage> {
public:
    // The constructor object of the root.
    SpImage();
    SpImage(sp_session* librarySession,
            sp_image* image,
            const orvo::shared_ptr<LibWrapper>& libraryShare);
    ~SpImage() override;

    // Script: a new wrapper for the picture with an id. The text is one id in Base64, cut or filled
    // to its length. Throws "Failed to decode ID with base64", and when libspotify has no such
    // handle.
    static void create(jspp::function_context& context);

private:
    // Script: the picture's bytes in Base64. Throws "Image size is zero" before it has loaded.
    void data(jspp::function_context& context) const;

    JSPP_EVENT_ATTRIBUTE(ImageLoaded, "ImageLoaded")

    // libspotify's callback: raises "ImageLoaded" with the living picture that it means.
    static void image_loaded(sp_image* image, void* userData) noexcept;

    // Takes the picture off the living ones and the load callback away, too.
    void releaseHandle() noexcept override;

    // Every living picture with a handle; script thread. Made on first use, never freed.
    static std::set<const void*>& instances();
};

#endif
