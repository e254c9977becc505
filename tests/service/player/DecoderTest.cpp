#include "player/Decoder.h"

#include "TestFiles.h"
#include "music/MusicFile.h"

#include <gst/gst.h>

namespace sonolet::service {
namespace {

using namespace sonolet::test;
using testing::StartsWith;

constexpr std::size_t twoSeconds = 88200;

// Reads as a player does: asks, and waits for the decoder's call when there is nothing yet.
class Reader final {
public:
    explicit Reader(const std::string& path)
        : decoder(std::make_shared<const MusicFile>(path), [this] {
              const std::lock_guard<std::mutex> lock(mutex);
              ready = true;
              wake.notify_all();
          }) {}

    // Up to `frames` more; less at the end or on a failure, which `last` tells.
    Samples read(std::size_t frames = SIZE_MAX) {
        Samples all;
        std::int16_t some[2 * 500];
        while (all.size() / 2 < frames) {
            const auto outcome =
                decoder.read(some, std::min<std::size_t>(500, frames - all.size() / 2));
            last = outcome.status;
            if (last == Decoder::Status::Data) {
                all.insert(all.end(), some, some + 2 * outcome.frames);
            } else if (last == Decoder::Status::NotYet) {
                std::unique_lock<std::mutex> lock(mutex);
                wake.wait(lock, [this] { return std::exchange(ready, false); });
            } else {
                break;
            }
        }
        return all;
    }

    Decoder::Status last = Decoder::Status::NotYet;

private:
    std::mutex mutex;
    std::condition_variable wake;
    bool ready = false;

public:
    // Last: it calls until it is gone.
    Decoder decoder;
};

// How alike two sounds are, the second `shift` frames late: 1 for the same, however loud. Each
// eighth frame tells.
double likeness(const Samples& a, const Samples& b, std::size_t shift) {
    double product = 0;
    double powerA = 0;
    double powerB = 0;
    for (std::size_t i = 0; i < a.size() && i + 2 * shift < b.size(); i += 16) {
        const double left = a[i];
        const double right = b[i + 2 * shift];
        product += left * right;
        powerA += left * left;
        powerB += right * right;
    }
    return product / std::sqrt(std::max(powerA * powerB, 1.0));
}

struct Format {
    const char* file;
    const char* elements;
    bool exact;
    // What the codec may add in silence at the ends, in frames.
    std::size_t padding;
};

constexpr Format formats[] = {
    {"a.wav", "wavenc", true, 0},
    {"a.flac", "flacenc", true, 0},
    {"vorbis.ogg", "vorbisenc quality=0.8 ! oggmux", false, 2},
    {"opus.ogg", "opusenc bitrate=160000 ! oggmux", false, 64},
    {"a.mp3", "lamemp3enc target=bitrate bitrate=192 cbr=true ! xingmux", false, 3500},
    {"a.m4a", "avenc_aac bitrate=192000 ! mp4mux", false, 3072},
    {"a.aac", "avenc_aac bitrate=192000 ! aacparse ! audio/mpeg,stream-format=adts", false, 3072},
};

TEST(Decoder, DecodesEveryFormatAndSeeksToTheFrame) {
    const TestFiles files;
    const Samples source = sweep(twoSeconds);
    for (const auto& [file, elements, exact, padding] : formats) {
        SCOPED_TRACE(file);
        Reader reader(files.encode(file, source, elements));
        const Samples all = reader.read();
        EXPECT_EQ(reader.last, Decoder::Status::End) << reader.decoder.failure();
        ASSERT_GE(all.size() / 2 + padding, twoSeconds);
        EXPECT_LE(all.size() / 2, twoSeconds + padding);
        double best = 0;
        for (std::size_t shift = 0; shift <= padding && best < 0.98; ++shift) {
            best = std::max(best, likeness(source, all, shift));
        }
        EXPECT_TRUE(exact ? all == source : best > 0.98) << best;

        Reader seeking(files.path(file));
        for (const int ms : {1500, 250, 1000, 0}) {
            seeking.decoder.seek(ms);
            const Samples part = seeking.read(8192);
            const auto at = all.begin() + ms * 441L / 5;
            const Samples expected(at, at + 2 * 8192L);
            ASSERT_EQ(part.size(), expected.size()) << ms;
            // One frame beside it, a tone of 3 kHz is 0.91 alike.
            EXPECT_TRUE(exact ? part == expected : likeness(expected, part, 0) > 0.96) << ms;
        }
    }
}

TEST(Decoder, ConvertsWithoutNoiseOfItsOwn) {
    const TestFiles files;
    const Samples tone = sweep(22050);
    const Samples mono = Reader(files.writeWav("mono.wav", tone, 1)).read();
    ASSERT_EQ(mono.size(), 2 * tone.size());
    for (std::size_t i = 0; i < mono.size(); ++i) {
        ASSERT_EQ(mono[i], tone[i / 2]) << "one channel goes to both, as loud as it was";
    }
    const std::string wide = files.encode("wide.flac", tone, "audio/x-raw,format=S24LE ! flacenc");
    EXPECT_TRUE(Reader(wide).read() == tone) << "16 bits inside 24 stay what they are";

    const std::string slow = files.writeWav("slow.wav", tone, 2, 22050);
    const Samples first = Reader(slow).read();
    EXPECT_NEAR(static_cast<double>(first.size()), 2.0 * static_cast<double>(tone.size()), 8);
    EXPECT_TRUE(first == Reader(slow).read()) << "twice the same file, twice the same samples";
}

TEST(Decoder, SaysWhatIsWrongWithAFile) {
    const TestFiles files;
    std::string garbage;
    std::generate_n(std::back_inserter(garbage), 20000, std::minstd_rand());
    for (const std::string& path :
         {files.write("empty.flac", ""), files.write("noise.mp3", garbage),
          files.write("text.ogg", "This is no music at all.\n"),
          files.write("half.flac", "fLaC" + garbage)}) {
        Reader reader(path);
        EXPECT_EQ(reader.read(), Samples()) << path;
        EXPECT_EQ(reader.last, Decoder::Status::Failed) << path;
        EXPECT_THAT(reader.decoder.failure(), StartsWith(path + ": "));
        EXPECT_GT(reader.decoder.failure().size(), path.size() + 10);
    }
}

// As a demuxer that fetches what a list of addresses names; whether one is installed or not.
TEST(Decoder, FollowsNoAddressInAFile) {
    static bool made = false;
    gst_init(nullptr, nullptr);
    GTypeInfo info{};
    info.class_size = sizeof(GstElementClass);
    info.instance_size = sizeof(GstElement);
    info.class_init = [](gpointer element, gpointer) {
        static GstStaticPadTemplate pad = GST_STATIC_PAD_TEMPLATE(
            "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("application/x-hls"));
        gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(element), &pad);
        gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(element), "fetches",
                                              "Codec/Demuxer/Adaptive", "a test's", "a test");
    };
    info.instance_init = [](GTypeInstance*, gpointer) { made = true; };
    const GType type = g_type_register_static(GST_TYPE_ELEMENT, "Fetches", &info, GTypeFlags{});
    ASSERT_TRUE(gst_element_register(nullptr, "fetches", GST_RANK_PRIMARY + 999, type));
    const TestFiles files;
    Reader reader(files.write("list.mp3", "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\n"
                                          "http://127.0.0.1:9/a.ts\n"));
    EXPECT_TRUE(reader.read().empty());
    EXPECT_EQ(reader.last, Decoder::Status::Failed);
    EXPECT_FALSE(made);
}

TEST(Decoder, NamesTheMissingElementAndItsPackage) {
    const TestFiles files;
    const std::string path = files.encode("a.mp3", sweep(44100), "lamemp3enc");
    GstCaps* caps = gst_caps_from_string("audio/mpeg, mpegversion=1, layer=3");
    GList* all =
        gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODER, GST_RANK_MARGINAL);
    GList* able = gst_element_factory_list_filter(all, caps, GST_PAD_SINK, FALSE);
    const auto rankAll = [able](guint rank) {
        for (GList* item = able; item != nullptr; item = item->next) {
            gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(item->data), rank);
        }
    };
    rankAll(GST_RANK_NONE);  // as if no package with them were installed
    Reader reader(path);
    EXPECT_EQ(reader.read(), Samples());
    EXPECT_EQ(reader.decoder.failure(),
              path + ": no decoder for audio/mpeg: element mpg123audiodec is missing "
                     "(gstreamer1.0-plugins-good)");
    rankAll(GST_RANK_PRIMARY);
    gst_plugin_feature_list_free(able);
    gst_plugin_feature_list_free(all);
    gst_caps_unref(caps);
}

}  // namespace
}  // namespace sonolet::service
