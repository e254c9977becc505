#include "player/FileSource.h"

#include "player/Handover.h"

#include <gst/base/gstbasesrc.h>

#include <cstdint>
#include <utility>

namespace sonolet::service {

namespace {

using File = std::shared_ptr<const Sound>;

// An object of GObject's, which knows neither constructors nor destructors.
struct FileSource {
    GstBaseSrc base;
    File* file;  // owned; constant once there are other threads
};

const Sound& fileOf(gpointer source) {
    const Handover visit(source);
    return **static_cast<FileSource*>(source)->file;
}

gboolean isSeekable(GstBaseSrc* source) {
    return fileOf(source).size() >= 0 ? TRUE : FALSE;
}

gboolean getSize(GstBaseSrc* source, guint64* size) {
    const std::int64_t known = fileOf(source).size();
    *size = static_cast<guint64>(known);
    return known >= 0 ? TRUE : FALSE;
}

// A read that waits ends when the element stops or is sought in.
gboolean unlock(GstBaseSrc* source) {
    fileOf(source).wakeReaders(true);
    return TRUE;
}

gboolean stopUnlocking(GstBaseSrc* source) {
    fileOf(source).wakeReaders(false);
    return TRUE;
}

GstFlowReturn fill(GstBaseSrc* source, guint64 offset, guint length, GstBuffer* buffer) {
    // GLib keeps what a freed buffer was in, and the next one is there: another source's, perhaps.
    const Handover recycled(buffer);
    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_WRITE)) {
        return GST_FLOW_ERROR;
    }
    std::size_t got = 0;
    GstFlowReturn result = GST_FLOW_OK;
    try {
        got = fileOf(source).read(static_cast<std::int64_t>(offset), map.data, length);
    } catch (const ReadEnded&) {
        result = GST_FLOW_FLUSHING;
    } catch (const UnreadableFile& error) {
        GST_ELEMENT_ERROR(source, RESOURCE, READ, ("%s", error.what()), (nullptr));
        result = GST_FLOW_ERROR;
    }
    gst_buffer_unmap(buffer, &map);
    if (result == GST_FLOW_OK && got == 0 && length > 0) {
        return GST_FLOW_EOS;  // it became shorter
    }
    gst_buffer_set_size(buffer, static_cast<gssize>(got));
    GST_BUFFER_OFFSET(buffer) = offset;
    GST_BUFFER_OFFSET_END(buffer) = offset + got;
    return result;
}

GstBaseSrcClass* parentClass = nullptr;

gboolean query(GstBaseSrc* source, GstQuery* asked) {
    if (GST_QUERY_TYPE(asked) != GST_QUERY_URI) {
        return parentClass->query(source, asked);
    }
    gchar* uri = gst_filename_to_uri(fileOf(source).path().c_str(), nullptr);
    gst_query_set_uri(asked, uri);
    g_free(uri);
    return TRUE;
}

void finalize(GObject* source) {
    const Handover fromTheirThreads(source);
    delete reinterpret_cast<FileSource*>(source)->file;
    G_OBJECT_CLASS(parentClass)->finalize(source);
}

void initialiseClass(gpointer type, gpointer) {
    static GstStaticPadTemplate pad =
        GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
    parentClass = static_cast<GstBaseSrcClass*>(g_type_class_peek_parent(type));
    gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(type), &pad);
    gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(type), "Music file", "Source/File",
                                          "Reads an open file", "Sonolet");
    G_OBJECT_CLASS(type)->finalize = finalize;
    auto* base = GST_BASE_SRC_CLASS(type);
    base->is_seekable = isSeekable;
    base->get_size = getSize;
    base->unlock = unlock;
    base->unlock_stop = stopUnlocking;
    base->fill = fill;
    base->query = query;
}

GType typeOf() {
    static const GType type = g_type_register_static_simple(
        GST_TYPE_BASE_SRC, "SonoletFileSource", sizeof(GstBaseSrcClass), initialiseClass,
        sizeof(FileSource), [](GTypeInstance*, gpointer) {}, static_cast<GTypeFlags>(0));
    return type;
}

}  // namespace

GstElement* makeFileSource(std::shared_ptr<const Sound> file) {
    auto* element = GST_ELEMENT_CAST(g_object_new(typeOf(), nullptr));
    // An earlier source of the same sound may have left it awake.
    file->wakeReaders(false);
    reinterpret_cast<FileSource*>(element)->file = new File(std::move(file));
    constexpr guint blockSize = 64 << 10;
    gst_base_src_set_blocksize(GST_BASE_SRC_CAST(element), blockSize);
    const Handover toTheirThreads(element);
    return element;
}

}  // namespace sonolet::service
