#include "support/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

namespace velicor::benchmarks {

namespace {

using Color = std::array<double, 3>;  // red, green, blue; 0…255

std::uint32_t packed(const Color& color) {
  const auto byte = [&](std::size_t i) {
    return static_cast<std::uint32_t>(std::lround(std::clamp(color[i], 0.0, 255.0)));
  };
  return 0xFF000000 | byte(0) << 16 | byte(1) << 8 | byte(2);
}

// Any number for a place on a lattice, 0…1.
double lattice(std::uint32_t x, std::uint32_t y, std::uint32_t octave) {
  std::uint32_t hash = x * 0x9E3779B1 ^ y * 0x85EBCA77 ^ octave * 0xC2B2AE3D;
  hash = (hash ^ hash >> 15) * 0x2C1B3C6D;
  hash = (hash ^ hash >> 12) * 0x297A2D39;
  return static_cast<double>(hash >> 8) / 0x1000000;
}

// Soft between lattice points that lie `pitch` pixels apart.
double softNoise(int x, int y, int pitch) {
  const auto column = static_cast<std::uint32_t>(x / pitch), row = static_cast<std::uint32_t>(y / pitch);
  const auto eased = [pitch](int place) {
    const double t = static_cast<double>(place % pitch) / pitch;
    return t * t * (3 - 2 * t);
  };
  const auto octave = static_cast<std::uint32_t>(pitch);
  const double across = eased(x), down = eased(y);
  return std::lerp(std::lerp(lattice(column, row, octave), lattice(column + 1, row, octave), across),
                   std::lerp(lattice(column, row + 1, octave), lattice(column + 1, row + 1, octave), across),
                   down);
}

// Surfaces of a few materials, lit from dark to bright, with edges where one ends.
Color photographed(int x, int y, std::mt19937& random) {
  static constexpr std::array<Color, 5> materials{
      Color{194, 150, 130}, {115, 82, 68}, {98, 122, 157}, {87, 108, 67}, {160, 160, 160}};
  const double where = softNoise(x, y, 173) + 0.3 * softNoise(x, y, 37);
  const auto material = static_cast<std::size_t>(where * 17) % materials.size();
  const double light = 0.15 + 1.1 * softNoise(x, y, 311) + 0.2 * softNoise(x, y, 11);
  const auto grain = [&] { return static_cast<double>(random() % 9) - 4; };
  return {materials[material][0] * light + grain(), materials[material][1] * light + grain(),
          materials[material][2] * light + grain()};
}

Color ramps(int x, int y, int width, int height) {
  const double across = static_cast<double>(x) / width, down = static_cast<double>(y) / height;
  return {255 * across, 255 * down, 255 * (1 - across)};
}

}  // namespace

const char* nameOf(Picture picture) {
  switch (picture) {
    case Picture::flat: return "flat";
    case Picture::noise: return "noise";
    case Picture::photograph: return "photograph";
    case Picture::gradient: return "gradient";
  }
  return "";
}

PixelBufferRef makePicture(Picture picture, int width, int height) {
  auto frame = std::make_shared<PixelBuffer>(width, height);
  std::mt19937 random(1);
  const auto pixelAt = [&](int x, int y) -> std::uint32_t {
    switch (picture) {
      case Picture::flat: return packed({150, 120, 105});
      case Picture::noise: return static_cast<std::uint32_t>(random());
      case Picture::photograph: return packed(photographed(x, y, random));
      case Picture::gradient: return packed(ramps(x, y, width, height));
    }
    return 0;
  };
  for (int y = 0; y < height; ++y) {
    std::byte* row = frame->bytes() + frame->bytesPerRow() * static_cast<std::size_t>(y);
    for (int x = 0; x < width; ++x) {
      const std::uint32_t pixel = pixelAt(x, y);
      std::memcpy(row + 4 * x, &pixel, sizeof pixel);
    }
  }
  return frame;
}

}  // namespace velicor::benchmarks
