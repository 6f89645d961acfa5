#pragma once

#include <array>

#include "platform/base/pixel_buffer.h"

// What is measured on. Speeds depend on the content (how many counters a picture touches, how well branches
// are foreseen), so that everything is measured on all of these.
namespace velicor::benchmarks {

enum class Picture {
  flat,        // one colour
  noise,       // every pixel any colour, independent of its neighbours
  photograph,  // soft shapes and edges in many lightnesses and few hues, skin among them, with sensor noise
  gradient,    // slow ramps of all three channels
};
inline constexpr std::array allPictures{Picture::flat, Picture::noise, Picture::photograph,
                                        Picture::gradient};

const char* nameOf(Picture picture);

// The same pixels at every call. Alpha bytes are anything.
PixelBufferRef makePicture(Picture picture, int width, int height);

}  // namespace velicor::benchmarks
