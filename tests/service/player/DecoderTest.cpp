#include "player/Decoder.h"

#include "TestFiles.h"

#include <gmock/gmock.h>
#include <gst/gst.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>

using namespace std::chrono_literals;

namespace sonolet::service {
namespace {

using sonolet::test::numbered;
using sonolet::test::Samples;
using sonolet::test::sweep;
using sonolet::test::TestFiles;
using testing::HasSubstr;

constexpr std::size_t twoSeconds = 88200;

// Reads as a player does: asks, and waits for the decoder's call when there is nothing yet.
class Reader final {
public:
    explicit Reader(const std::string& path) : decoder(path, [this] { called(); }) {}

    // Up to `frames` more; less at the end or on a failure, which `last` tells.
    Samples read(std::size_t frames = SIZE_MAX) {
        Samples all;
        std::int16_t some[2 * 500];
        while (all.size() / 2 < frames) {
            const std::size_t wanted = std::min<std::size_t>(500, frames - all.size() / 2);
            const Decoder::Outcome outcome = decoder.read(some, wanted);
            last = outcome.status;
            if (last == Decoder::Status::Data) {
                all.insert(all.end(), some, some + 2 * outcome.frames);
            } else if (last != Decoder::Status::NotYet || !awaitCall()) {
                break;
            }
        }
        return all;
    }

    Decoder::Status last = Decoder::Status::NotYet;

private:
    void called() {
        const std::lock_guard<std::mutex> lock(mutex);
        ready = true;
        wake.notify_all();
    }

    bool awaitCall() {
        std::unique_lock<std::mutex> lock(mutex);
        const bool came = wake.wait_for(lock, 20s, [this] { return ready; });
        ready = false;
        return came;
    }

    std::mutex mutex;
    std::condition_variable wake;
    bool ready = false;

public:
    Decoder decoder;
};

// How alike two sounds are, `shift` frames apart: 1 for the same, whatever their loudness.
double likeness(const Samples& a, const Samples& b, long shift) {
    double product = 0;
    double powerA = 0;
    double powerB = 0;
    const long frames = static_cast<long>(std::min(a.size(), b.size()) / 2);
    for (long i = std::max(0L, -shift); i < frames && i + shift < frames; ++i) {
        const double left = a[static_cast<std::size_t>(2 * i)];
        const double right = b[static_cast<std::size_t>(2 * (i + shift))];
        product += left * right;
        powerA += left * left;
        powerB += right * right;
    }
    return product / std::sqrt(std::max(powerA * powerB, 1.0));
}

// Hides every decoder of a media type from GStreamer, as if its package were not installed.
class WithoutDecoders final {
public:
    explicit WithoutDecoders(const char* mediaType) {
        GstCaps* caps = gst_caps_from_string(mediaType);
        GList* all = gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODER,
                                                           GST_RANK_MARGINAL);
        able = gst_element_factory_list_filter(all, caps, GST_PAD_SINK, FALSE);
        for (GList* item = able; item != nullptr; item = item->next) {
            ranks.push_back(gst_plugin_feature_get_rank(GST_PLUGIN_FEATURE(item->data)));
            gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(item->data), GST_RANK_NONE);
        }
        gst_plugin_feature_list_free(all);
        gst_caps_unref(caps);
    }

    ~WithoutDecoders() {
        auto rank = ranks.begin();
        for (GList* item = able; item != nullptr; item = item->next) {
            gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(item->data), *rank++);
        }
        gst_plugin_feature_list_free(able);
    }

    WithoutDecoders(const WithoutDecoders&) = delete;
    WithoutDecoders& operator=(const WithoutDecoders&) = delete;

private:
    GList* able = nullptr;
    std::vector<guint> ranks;
};

struct Format {
    const char* file;
    const char* elements;
    bool exact;
    // What the codec may add in silence at the ends, in frames.
    std::size_t padding;
};

std::ostream& operator<<(std::ostream& out, const Format& format) {
    return out << format.file;
}

constexpr Format formats[] = {
    {"a.wav", "wavenc", true, 0},
    {"a.flac", "flacenc", true, 0},
    {"vorbis.ogg", "vorbisenc quality=0.8 ! oggmux", false, 2},
    {"opus.ogg", "opusenc bitrate=160000 ! oggmux", false, 64},
    {"a.mp3", "lamemp3enc target=bitrate bitrate=192 cbr=true ! xingmux", false, 3500},
    {"a.m4a", "avenc_aac bitrate=192000 ! mp4mux", false, 3072},
    {"a.aac", "avenc_aac bitrate=192000 ! aacparse ! audio/mpeg,stream-format=adts", false, 3072},
};

class EveryFormat : public testing::TestWithParam<Format> {
protected:
    TestFiles files;
    const Samples source = sweep(twoSeconds);
    const std::string path = files.encode(GetParam().file, source, GetParam().elements);
};

TEST_P(EveryFormat, GivesTheSoundThatWasEncoded) {
    Reader reader(path);
    const Samples decoded = reader.read();
    EXPECT_EQ(reader.last, Decoder::Status::End) << reader.decoder.failure();
    if (GetParam().exact) {
        EXPECT_TRUE(decoded == source);
        return;
    }
    const std::size_t frames = decoded.size() / 2;
    EXPECT_GE(frames + GetParam().padding, twoSeconds);
    EXPECT_LE(frames, twoSeconds + GetParam().padding);
    double best = 0;
    for (long shift = 0; shift <= static_cast<long>(GetParam().padding) && best < 0.98; ++shift) {
        best = std::max(best, likeness(source, decoded, shift));
    }
    EXPECT_GT(best, 0.98);
}

TEST_P(EveryFormat, SeeksToTheFrame) {
    Reader whole(path);
    const Samples all = whole.read();
    Reader reader(path);
    for (const int ms : {1500, 250, 1000, 0}) {
        reader.decoder.seek(ms);
        const std::size_t frame = static_cast<std::size_t>(ms) * 441 / 10;
        const Samples part = reader.read(8192);
        ASSERT_EQ(part.size() / 2, 8192U) << ms;
        const Samples expected(all.begin() + static_cast<long>(2 * frame),
                               all.begin() + static_cast<long>(2 * (frame + 8192)));
        if (GetParam().exact) {
            EXPECT_TRUE(part == expected) << ms;
            continue;
        }
        // One frame beside it, a tone of 3 kHz is 0.91 alike.
        EXPECT_GT(likeness(expected, part, 0), 0.96) << ms;
    }
}

INSTANTIATE_TEST_SUITE_P(Decoder, EveryFormat, testing::ValuesIn(formats), [](const auto& item) {
    std::string name = item.param.file;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

TEST(Decoder, SeeksAfterTheEndAndEndsAtOnceBehindIt) {
    const TestFiles files;
    const Samples source = numbered(1, twoSeconds / 2);
    Reader reader(files.encode("a.flac", source, "flacenc"));
    reader.read();
    ASSERT_EQ(reader.last, Decoder::Status::End);

    reader.decoder.seek(990);
    EXPECT_EQ(reader.read(), Samples(source.end() - 882, source.end()));
    reader.decoder.seek(1000);
    EXPECT_EQ(reader.read(), Samples());
    EXPECT_EQ(reader.last, Decoder::Status::End);
    reader.decoder.seek(2147483647);
    EXPECT_EQ(reader.read(), Samples());
    EXPECT_EQ(reader.last, Decoder::Status::End);
    reader.decoder.seek(0);
    EXPECT_TRUE(reader.read() == source);
}

TEST(Decoder, ConvertsWithoutNoiseOfItsOwn) {
    const TestFiles files;
    Samples tone = sweep(22050);
    Reader mono(files.writeWav("mono.wav", tone, 1));
    Samples both;
    for (const std::int16_t sample : tone) {
        both.insert(both.end(), {sample, sample});
    }
    EXPECT_TRUE(mono.read() == both) << "one channel goes to both, as loud as it was";

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
    for (unsigned i = 0, value = 1; i < 20000; ++i) {
        value = value * 1103515245 + 12345;
        garbage.push_back(static_cast<char>(value >> 16));
    }
    const std::string broken[] = {files.path("missing.flac"), files.write("empty.flac", ""),
                                  files.write("noise.mp3", garbage),
                                  files.write("text.ogg", "This is no music at all.\n"),
                                  files.write("half.flac", "fLaC" + garbage)};
    for (const std::string& path : broken) {
        Reader reader(path);
        EXPECT_EQ(reader.read(), Samples()) << path;
        EXPECT_EQ(reader.last, Decoder::Status::Failed) << path;
        EXPECT_THAT(reader.decoder.failure(), HasSubstr(path + ": "));
        EXPECT_GT(reader.decoder.failure().size(), path.size() + 10);
    }
}

TEST(Decoder, NamesTheMissingElementAndItsPackage) {
    const TestFiles files;
    const std::string path = files.encode("a.mp3", sweep(44100), "lamemp3enc");

    const WithoutDecoders hidden("audio/mpeg, mpegversion=1, layer=3");
    Reader reader(path);
    EXPECT_EQ(reader.read(), Samples());
    EXPECT_EQ(reader.last, Decoder::Status::Failed);
    EXPECT_EQ(reader.decoder.failure(),
              path + ": no decoder for audio/mpeg: element mpg123audiodec is missing "
                     "(gstreamer1.0-plugins-good)");
}

TEST(Decoder, GivesWhatATruncatedFileStillHolds) {
    const TestFiles files;
    const Samples source = sweep(twoSeconds);
    files.encode("a.flac", source, "flacenc");
    files.truncate("a.flac", 0.5);
    Reader reader(files.path("a.flac"));
    const Samples decoded = reader.read();
    EXPECT_NE(reader.last, Decoder::Status::NotYet);
    ASSERT_GT(decoded.size(), source.size() / 4);
    ASSERT_LT(decoded.size(), source.size());
    EXPECT_TRUE(std::equal(decoded.begin(), decoded.end(), source.begin()));
}

}  // namespace
}  // namespace sonolet::service
