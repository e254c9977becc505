#include "images/Jpeg.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace sonolet::service {

namespace {

constexpr std::int64_t mostPixels = 40'000'000;
constexpr char quality[] = "90";

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Pixbuf = std::unique_ptr<GdkPixbuf, Unref>;

// Throws the error, which is freed.
[[noreturn]] void fail(GError* error, const char* otherwise) {
    const std::string text = error != nullptr ? error->message : otherwise;
    g_clear_error(&error);
    throw std::runtime_error(text);
}

// The decoders for more formats than covers have are left alone.
const char* formatOf(const std::string& picture) {
    if (picture.compare(0, 3, "\xff\xd8\xff") == 0) {
        return "jpeg";
    }
    if (picture.compare(0, 8, "\x89PNG\r\n\x1a\n") == 0) {
        return "png";
    }
    throw std::runtime_error("the picture is neither JPEG nor PNG");
}

// The decoders take a picture that ends early for one that is grey from there on.
bool hasEnd(const std::string& picture, std::string_view format) {
    if (format == "png") {
        return picture.rfind("IEND") != std::string::npos;
    }
    // An end before the last scan is that of a preview among the metadata.
    const std::size_t end = picture.rfind("\xff\xd9");
    const std::size_t scan = picture.rfind("\xff\xda");
    return end != std::string::npos && scan != std::string::npos && end > scan;
}

struct Wanted {
    int longerSide;
    std::int64_t pixels = 0;  // of the picture as it is
};

void chooseSize(GdkPixbufLoader* loader, gint width, gint height, gpointer data) {
    auto& wanted = *static_cast<Wanted*>(data);
    wanted.pixels = static_cast<std::int64_t>(width) * height;
    const std::int64_t longer = std::max(width, height);
    if (wanted.pixels > mostPixels) {
        gdk_pixbuf_loader_set_size(loader, 0, 0);  // ends the decoding
    } else if (longer > wanted.longerSide) {
        const auto scaled = [&](std::int64_t side) {
            return std::max(1, static_cast<int>((side * wanted.longerSide + longer / 2) / longer));
        };
        gdk_pixbuf_loader_set_size(loader, scaled(width), scaled(height));
    }
}

Pixbuf decode(const std::string& picture, int longerSide, const StopFlag& stop) {
    const char* format = formatOf(picture);
    GError* error = nullptr;
    const std::unique_ptr<GdkPixbufLoader, Unref> loader(
        gdk_pixbuf_loader_new_with_type(format, &error));
    if (loader == nullptr) {
        fail(error, "there is no decoder");
    }
    Wanted wanted{longerSide};
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(&chooseSize), &wanted);
    // A little at a time: a picture may unpack to a thousand times as much.
    constexpr std::size_t step = 16 << 10;
    bool written = true;
    const auto goesOn = [&] { return written && !stop && wanted.pixels <= mostPixels; };
    for (std::size_t done = 0; done < picture.size() && goesOn(); done += step) {
        written = gdk_pixbuf_loader_write(loader.get(),
                                          reinterpret_cast<const guchar*>(picture.data()) + done,
                                          std::min(step, picture.size() - done), &error) != FALSE;
    }
    // A loader must be closed in any case; the first error is the one that tells.
    const bool closed = gdk_pixbuf_loader_close(loader.get(), written ? &error : nullptr) != FALSE;
    if (wanted.pixels > mostPixels) {
        g_clear_error(&error);
        throw std::runtime_error("the picture has " + std::to_string(wanted.pixels) +
                                 " pixels; at most " + std::to_string(mostPixels) +
                                 " are unpacked");
    }
    GdkPixbuf* decoded = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (stop) {
        g_clear_error(&error);
        throw std::runtime_error("nobody waits for the picture any more");
    }
    if (!written || !closed || decoded == nullptr) {
        fail(error, "the picture is damaged");
    }
    if (!hasEnd(picture, format)) {
        throw std::runtime_error("the picture ends early");
    }
    return Pixbuf(gdk_pixbuf_apply_embedded_orientation(decoded));
}

Pixbuf onWhite(Pixbuf pixbuf) {
    if (pixbuf == nullptr || !gdk_pixbuf_get_has_alpha(pixbuf.get())) {
        return pixbuf;
    }
    constexpr int opaque = 255;
    constexpr int squares = 16;
    constexpr guint32 white = 0xffffff;
    return Pixbuf(gdk_pixbuf_composite_color_simple(
        pixbuf.get(), gdk_pixbuf_get_width(pixbuf.get()), gdk_pixbuf_get_height(pixbuf.get()),
        GDK_INTERP_NEAREST, opaque, squares, white, white));
}

}  // namespace

std::string scaledJpeg(const std::string& picture, int longerSide, const StopFlag& stop) {
    const Pixbuf pixbuf = onWhite(decode(picture, longerSide, stop));
    if (pixbuf == nullptr) {
        throw std::runtime_error("there is not enough memory for the picture");
    }
    char key[] = "quality";
    std::string value = quality;
    char* keys[] = {key, nullptr};
    char* values[] = {value.data(), nullptr};
    gchar* bytes = nullptr;
    gsize size = 0;
    GError* error = nullptr;
    if (!gdk_pixbuf_save_to_bufferv(pixbuf.get(), &bytes, &size, "jpeg", keys, values, &error)) {
        fail(error, "the picture cannot be written as JPEG");
    }
    std::string jpeg(bytes, size);
    g_free(bytes);
    return jpeg;
}

}  // namespace sonolet::service
