#include "SpImage.h"

#include "ImageId.h"
#include "Session.h"

#include <array>
#include <string>

namespace {

constexpr unsigned idTextSize = 28;  // characters of an id in Base64

}  // namespace

std::set<const void*>& SpImage::instances() {
    static auto& living = *new std::set<const void*>;
    return living;
}

SpImage::SpImage() {
    _function("create", &SpImage::create, "s");
}

SpImage::SpImage(sp_session* librarySession,
                 sp_image* image,
                 const orvo::shared_ptr<LibWrapper>& libraryShare)
    : Wrapper(librarySession, image, libraryShare) {
    static const function_row members[] = {
        {"isLoaded", &SpImage::reads<&sp_image_is_loaded>, ""},
        {"error", &SpImage::reads<&sp_image_error>, ""},
        {"format", &SpImage::reads<&sp_image_format>, ""},
        {"data", &SpImage::data, ""},
        {"id", &SpImage::reads<&sp_image_image_id>, ""},
    };
    static const attribute_row events[] = {JSPP_EVENT_ROW(SpImage, ImageLoaded)};
    static const jspp::name_table& names =
        *new jspp::name_table(listener_functions(), members, events);
    _class(names);
    loseNamesAtLogout();
    // Last: a constructor that throws leaves no callback behind.
    if (handle) {
        instances().insert(this);
        sp_image_add_load_callback(image, &image_loaded, this);
    }
}

SpImage::~SpImage() {
    releaseHandle();
}

void SpImage::releaseHandle() noexcept {
    if (handle) {
        instances().erase(this);
        sp_image_remove_load_callback(handle.get(), &image_loaded, this);
        handle.release();
    }
}

void SpImage::image_loaded(sp_image*, void* userData) noexcept {
    if (instances().count(userData) == 0) {
        return;
    }
    const orvo::shared_ptr<SpImage> self = static_cast<SpImage*>(userData)->shared_from_this();
    if (self) {
        self->dispatch_event("ImageLoaded", self);
    }
}

void SpImage::create(jspp::function_context& context) {
    sp_session* const session = Session::requireLibrarySession();
    std::string text = context.string(0);
    // Exactly one id, whatever the text's length; what is missing counts as padding.
    text.resize(idTextSize, '=');
    std::array<unsigned char, imageIdSize> id{};
    if (base64_decode(text.data(), idTextSize, id.data(), imageIdSize) != 0) {
        throw std::runtime_error("Failed to decode ID with base64");
    }
    answer(Created<sp_image>(sp_image_create(session, id.data())), context);
}

void SpImage::data(jspp::function_context& context) const {
    std::size_t size = 0;
    const void* const bytes = sp_image_data(handle.get(), &size);
    if (!bytes || size == 0) {
        throw std::runtime_error("Image size is zero");
    }
    std::string text;
    base64_encode(static_cast<const unsigned char*>(bytes), static_cast<unsigned>(size), text);
    context.return_string(text);
}
