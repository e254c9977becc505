// Images: from the pictures in a folder of music to what a page gets, and what is kept of them.

#include "TestMusic.h"
#include "TestSession.h"
#include "images/Jpeg.h"

#include <attachedpictureframe.h>
#include <flacfile.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mpegfile.h>
#include <vorbisfile.h>

namespace sonolet::test {
namespace {

// A picture of noise, which cannot be made small.
std::string picture(const char* type, int width, int height) {
    GdkPixbuf* made = gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, width, height);
    std::generate_n(gdk_pixbuf_get_pixels(made), gdk_pixbuf_get_byte_length(made), g_random_int);
    gchar* bytes = nullptr;
    gsize size = 0;
    gdk_pixbuf_save_to_buffer(made, &bytes, &size, type, nullptr, nullptr);
    std::string result(bytes, size);
    g_free(bytes);
    g_object_unref(made);
    return result;
}

// An image that counts how often it is told to be there.
struct TestImage {
    TestImage(TestSession& loading, const std::string& id) : session(loading) {
        image = sp_image_create(session.get(), reinterpret_cast<const byte*>(id.data()));
        sp_image_add_load_callback(image, count, this);
        EXPECT_EQ(std::string(sp_image_image_id(image), sp_image_image_id(image) + 20), id);
    }
    ~TestImage() { sp_image_release(image); }
    static void count(sp_image*, void* self) { ++static_cast<TestImage*>(self)->told; }

    sp_error load() {
        EXPECT_TRUE(session.until([&] { return told > 0; }) && sp_image_is_loaded(image));
        std::size_t size = 1;
        const auto* data = static_cast<const char*>(sp_image_data(image, &size));
        jpeg.assign(data == nullptr ? "" : data, size);
        EXPECT_EQ(sp_image_format(image), size > 0 ? 0 : -1);
        EXPECT_EQ(sp_image_error(image) == SP_ERROR_OK, size > 0);
        return sp_image_error(image);
    }
    // What the JPEG's header says, or what is wrong.
    std::string size() {
        const std::size_t frame = load() == SP_ERROR_OK ? jpeg.find("\xff\xc0") : jpeg.npos;
        const auto side = [&](std::size_t at) {
            return std::to_string((jpeg.at(at) & 255) << 8 | (jpeg.at(at + 1) & 255));
        };
        return frame == jpeg.npos ? session.log : side(frame + 7) + "x" + side(frame + 5);
    }

    TestSession& session;
    sp_image* image;
    std::string jpeg;
    int told = 0;
};

std::string cover(const std::string& title, sp_image_size size = SP_IMAGE_SIZE_LARGE) {
    const auto track = trackOf(TestMusic::link(title));
    const byte* id = sp_album_cover(sp_track_album(track.get()), size);
    return id == nullptr ? std::string(20, '?') : std::string(id, id + 20);
}

// A song on an album of its own, with a picture beside it.
void add(const TestMusic& music, const std::string& title, const std::string& bytes) {
    music.add(title + "/1.wav", "TITLE=" + title + "|ALBUM=" + title);
    music.write(title + "/cover.jpg", bytes);
}

TEST(ImageTest, CoversComeFromEveryTagAndFileInThreeSizes) {
    const TestMusic music;
    const auto encoded = [&](const std::string& name, const char* elements) {
        music.encode(name, elements, "TITLE=" + name + "|ALBUM=" + name);
        return music.path(name);
    };
    const std::string bytes = picture("jpeg", 31, 20);
    const TagLib::ByteVector data(bytes.data(), static_cast<unsigned>(bytes.size()));
    {
        TagLib::FLAC::File flac(encoded("a.flac", "flacenc").c_str());
        TagLib::Ogg::Vorbis::File vorbis(encoded("b.ogg", "vorbisenc ! oggmux").c_str());
        TagLib::MPEG::File mpeg(encoded("c.mp3", "lamemp3enc").c_str());
        TagLib::MP4::File mp4(encoded("d.m4a", "avenc_aac ! mp4mux").c_str());
        auto* block = new TagLib::FLAC::Picture;  // the tag's, as the others
        block->setData(data);
        flac.addPicture(block);
        vorbis.tag()->addPicture(new TagLib::FLAC::Picture(block->render()));
        auto* frame = new TagLib::ID3v2::AttachedPictureFrame;
        frame->setPicture(data);
        mpeg.ID3v2Tag(true)->addFrame(frame);
        const TagLib::MP4::CoverArt art(TagLib::MP4::CoverArt::JPEG, data);
        mp4.tag()->setItem("covr", TagLib::MP4::CoverArtList().append(art));
        ASSERT_TRUE(flac.save() && vorbis.save() && mpeg.save() && mp4.save());
    }
    add(music, "Wide", picture("png", 1000, 501));
    add(music, "Tall", picture("jpeg", 1, 3000));
    TestSession session(TestSession::State::Scanned);
    for (const char* name : {"a.flac", "b.ogg", "c.mp3", "d.m4a"}) {
        EXPECT_EQ(TestImage(session, cover(name)).size(), "31x20") << name;
        std::filesystem::remove_all(music.stateFolder() + "/cache/images");
        std::filesystem::remove(music.path(name));
        ASSERT_EQ(mkfifo(music.path(name).c_str(), 0600), 0);
    }
    EXPECT_EQ(TestImage(session, cover("a.flac")).load(), SP_ERROR_OTHER_PERMANENT) << "pipes";
    EXPECT_EQ(TestImage(session, cover("Wide", SP_IMAGE_SIZE_NORMAL)).size(), "300x150");
    EXPECT_EQ(TestImage(session, cover("Wide", SP_IMAGE_SIZE_SMALL)).size(), "64x32");
    EXPECT_EQ(TestImage(session, cover("Wide", SP_IMAGE_SIZE_LARGE)).size(), "640x321");
    EXPECT_EQ(TestImage(session, cover("Tall", SP_IMAGE_SIZE_SMALL)).size(), "1x64");
}

TEST(ImageTest, TheCacheOutlivesTheMusicKeepsToItsSizeAndDropsTheLongestUnused) {
    const TestMusic music;
    std::vector<std::string> ids{"a", "b", "c", "d", "e"};
    for (const std::string& title : ids) {
        add(music, title, picture("png", 640, 640));
    }
    const std::string folder = music.stateFolder() + "/cache/images";
    TestSession session(TestSession::State::Scanned);
    EXPECT_EQ(sp_session_set_cache_size(session.get(), 1), SP_ERROR_OK);
    for (std::string& id : ids) {
        id = cover(id);
        EXPECT_EQ(TestImage(session, id).load(), SP_ERROR_OK);
        EXPECT_EQ(TestImage(session, ids[0]).load(), SP_ERROR_OK);
    }
    std::uintmax_t kept = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        kept += file.file_size();
        EXPECT_EQ(file.status().permissions(), std::filesystem::perms(0600));
    }
    EXPECT_LE(kept, 1U << 20);
    std::filesystem::remove_all(music.path(""));
    EXPECT_EQ(TestImage(session, ids[0]).load(), SP_ERROR_OK);
    EXPECT_EQ(TestImage(session, ids[1]).load(), SP_ERROR_OTHER_PERMANENT);
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        std::filesystem::resize_file(file, 100);
    }
    EXPECT_EQ(TestImage(session, ids[0]).load(), SP_ERROR_OTHER_PERMANENT) << "cut short";
}

TEST(ImageTest, WhatCannotBeShownIsAnError) {
    const TestMusic music;
    const std::string png = picture("png", 100, 100);
    const std::string jpeg = picture("jpeg", 100, 100);
    // Headers of 65500 x 65500 pixels.
    const std::string vast("\0\0\xff\xdc\0\0\xff\xdc\x08\6\0\0\0\x93\x57\x16\x1b", 17);
    add(music, "Vast", std::string(jpeg).replace(jpeg.find("\xff\xc0") + 5, 4, "\xff\xdc\xff\xdc"));
    add(music, "Vast PNG", std::string(png).replace(16, vast.size(), vast));
    add(music, "Cut", jpeg.substr(0, jpeg.size() / 2));
    add(music, "Cut PNG", png.substr(0, png.size() / 2));
    add(music, "Text", "no picture");
    add(music, "Changed", picture("jpeg", 2, 2));
    TestSession session(TestSession::State::Scanned);
    std::vector<std::pair<std::string, std::string>> covers;
    for (const char* title : {"Vast", "Vast PNG", "Cut", "Cut PNG", "Text", "Changed"}) {
        covers.emplace_back(title, cover(title));
    }
    music.write("Changed/cover.jpg", jpeg);
    for (const auto& [title, id] : covers) {
        TestImage image(session, id);
        EXPECT_EQ(sp_image_error(image.image), SP_ERROR_IS_LOADING);
        EXPECT_EQ(image.load(), SP_ERROR_OTHER_PERMANENT) << title;
    }
    EXPECT_LT(session.log.find("4290250000 pixels"), session.log.rfind("4290250000 pixels"));
    EXPECT_NO_THROW(service::scaledJpeg(jpeg, 64, service::StopFlag(false)));
    EXPECT_THROW(service::scaledJpeg(jpeg, 64, service::StopFlag(true)), std::runtime_error);
    const std::string unsized = cover("Text").replace(19, 1, "\3");
    EXPECT_EQ(TestImage(session, unsized).load(), SP_ERROR_OTHER_PERMANENT);
    EXPECT_EQ(TestImage(session, std::string(20, '\0')).load(), SP_ERROR_OTHER_PERMANENT);
}

TEST(ImageTest, WaitsForTheScanAndTellsEachListenerOnce) {
    const TestMusic music;
    add(music, "Song", picture("jpeg", 50, 50));
    const std::string id = (TestSession(TestSession::State::Scanned), cover("Song"));
    std::filesystem::remove_all(music.stateFolder());
    TestSession session;
    static_cast<void>(TestImage(session, id));  // gone before it loads
    TestImage first(session, id);
    TestImage removed(session, id);
    EXPECT_EQ(first.image, removed.image) << "one handle for one id";
    sp_image_remove_load_callback(removed.image, TestImage::count, &removed);
    EXPECT_EQ(first.load(), SP_ERROR_OK);
    TestImage late(session, id);
    EXPECT_EQ(late.told, 0) << "not before events are processed";
    EXPECT_EQ(late.load(), SP_ERROR_OK);
    // A callback may end the session. Handles outlive it, and nobody else is told.
    const auto end = [](sp_image*, void* ended) { static_cast<TestSession*>(ended)->release(); };
    sp_image_add_load_callback(late.image, end, &session);
    TestImage unheard(session, id);
    EXPECT_TRUE(session.until([&] { return session.get() == nullptr; }));
    EXPECT_EQ(sp_image_add_load_callback(late.image, TestImage::count, &late), SP_ERROR_OK);
    EXPECT_EQ(std::vector({first.told, removed.told, late.told, unheard.told}),
              std::vector({1, 0, 1, 0}));
}

}  // namespace
}  // namespace sonolet::test
