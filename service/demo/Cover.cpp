#include "demo/Cover.h"

#include "demo/Encoder.h"

#include <cmath>

namespace sonolet::service {

std::vector<unsigned char> paintCover(const DemoAlbum& album) {
    const double size = coverSize;
    const double horizon = size * (0.5 + 0.05 * (album.year % 4));
    const double centre = size * (0.3 + 0.1 * (album.year % 5));
    const double height = horizon - size * 0.16;
    const double radius = size * 0.17;
    std::vector<unsigned char> pixels;
    pixels.reserve(std::size_t{3} * coverSize * coverSize);
    for (int y = 0; y < coverSize; ++y) {
        for (int x = 0; x < coverSize; ++x) {
            // 0 is the sky's colour, 1 the ground's.
            double shade =
                y < horizon ? 0.45 * y / horizon : 0.75 + 0.25 * (y - horizon) / (size - horizon);
            const bool inDisc = std::hypot(x - centre, y - height) < radius;
            // Below the horizon the disc lies in waves.
            const double wave = 5 * std::sin(y * 0.55) + 3 * std::sin(y * 0.21);
            const bool mirrored =
                std::hypot(x - centre - wave, (2 * horizon - y - height) * 0.8) < radius &&
                y % 9 < 5;
            if (y < horizon ? inDisc : mirrored) {
                shade = y < horizon ? 0.95 : 0.55;
            }
            const auto blend = [shade](unsigned char from, unsigned char to) {
                return static_cast<unsigned char>(std::lround(from + (to - from) * shade));
            };
            pixels.push_back(blend(album.sky.red, album.ground.red));
            pixels.push_back(blend(album.sky.green, album.ground.green));
            pixels.push_back(blend(album.sky.blue, album.ground.blue));
        }
    }
    return pixels;
}

void writeCover(const DemoAlbum& album, const std::string& path) {
    const std::vector<unsigned char> pixels = paintCover(album);
    const std::string side = std::to_string(coverSize);
    encode(pixels.data(), pixels.size(),
           "video/x-raw, format=RGB, framerate=1/1, width=" + side + ", height=" + side,
           "videoconvert ! jpegenc quality=85", path);
}

}  // namespace sonolet::service
