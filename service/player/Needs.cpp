#include "player/Needs.h"

#include <cstring>

namespace sonolet::service {

namespace {

// The elements that GStreamer is known to need, with the Debian package of each.
struct Need {
    const char* mediaType;
    int mpegVersion;  // 0: any
    const char* role;
    const char* element;
    const char* package;
};

constexpr Need needs[] = {
    {"audio/mpeg", 1, "decoder", "mpg123audiodec", "gstreamer1.0-plugins-good"},
    {"audio/mpeg", 0, "decoder", "avdec_aac", "gstreamer1.0-libav"},
    {"audio/x-flac", 0, "decoder", "flacdec", "gstreamer1.0-plugins-good"},
    {"audio/x-vorbis", 0, "decoder", "vorbisdec", "gstreamer1.0-plugins-base"},
    {"audio/x-opus", 0, "decoder", "opusdec", "gstreamer1.0-plugins-base"},
    {"audio/x-wav", 0, "reader", "wavparse", "gstreamer1.0-plugins-good"},
    {"application/ogg", 0, "reader", "oggdemux", "gstreamer1.0-plugins-base"},
    {"audio/ogg", 0, "reader", "oggdemux", "gstreamer1.0-plugins-base"},
    {"video/quicktime", 0, "reader", "qtdemux", "gstreamer1.0-plugins-good"},
    {"audio/x-m4a", 0, "reader", "qtdemux", "gstreamer1.0-plugins-good"},
    {"application/x-id3", 0, "reader", "id3demux", "gstreamer1.0-plugins-good"},
};

}  // namespace

std::string describeNeed(const GstCaps* caps) {
    const GstStructure* structure = gst_caps_get_structure(caps, 0);
    const char* mediaType = gst_structure_get_name(structure);
    int mpegVersion = 0;
    gst_structure_get_int(structure, "mpegversion", &mpegVersion);
    for (const Need& need : needs) {
        if (std::strcmp(need.mediaType, mediaType) == 0 &&
            (need.mpegVersion == 0 || need.mpegVersion == mpegVersion)) {
            return std::string("no ") + need.role + " for " + mediaType + ": element " +
                   need.element + " is missing (" + need.package + ")";
        }
    }
    return std::string("no decoder for ") + mediaType;
}

}  // namespace sonolet::service
