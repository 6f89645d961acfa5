#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "platform/base/error.h"
#include "platform/x11/connection.h"

namespace velicor::screencapture {

// How the server lays out the pixels of one visual.
struct VisualFormat {
  std::uint32_t pictureFormat = 0;  // for compositing
  int depth = 0;
  bool alpha = false;
  bool plainBgra = false;  // four bytes B, G, R, x: can be copied as it is
};

// What the server can decode, by visual.
class VisualFormats {
 public:
  // Refuses, in words, a server whose pixels would come out scrambled. One round trip.
  static Result<VisualFormats> read(x11::Connection& connection);

  // None for a visual that the server itself can't decode.
  const VisualFormat* find(std::uint32_t visual) const;

  // 32 bits with alpha on top: bytes B, G, R, A.
  std::uint32_t bgraPictureFormat() const { return bgra_; }

 private:
  std::map<std::uint32_t, VisualFormat> formats_;
  std::uint32_t bgra_ = 0;
};

}  // namespace velicor::screencapture
