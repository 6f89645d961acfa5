#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <QColor>
#include <QImage>

#include "program/running_velicor.h"
#include "support/robot.h"
#include "support/x_client.h"
#include "support/x_server.h"

namespace velicor::test {

enum class Surroundings { noManager, windowManager, windowManagerAndCompositor };
std::string nameOf(Surroundings surroundings);

// A display of 1280 × 800 pixels with what usually runs on one, another program to draw on it, and a hand on
// its mouse. A loupe that starts here covers the pixels from (553, 313) to (728, 488).
class Stage {
 public:
  explicit Stage(Surroundings surroundings);

  Launch launch() const { return {.display = server_.name()}; }

  const XServer& server() const { return server_; }
  XClient& painter() { return painter_; }
  const XClient& painter() const { return painter_; }
  Robot& mouse() { return mouse_; }

  // Waits until a press at this place would go to a window with exactly this frame: the loupe.
  bool takesMouse(const DeviceRect& loupe, DevicePoint place) const;

  // The frame of the top-level window that gets the mouse at this place.
  DeviceRect windowAt(DevicePoint place) const;

  // Until the keyboard goes to a window with this title, or to one with exactly this frame.
  testing::AssertionResult hasKeyboard(const std::string& title) const;
  testing::AssertionResult hasKeyboard(const DeviceRect& frame) const;

  // What a user sees.
  QImage screenshot() const;
  QColor colorAt(DevicePoint place) const;

  // Until a pixel of the screen shows the colour, each channel within the tolerance; says what it shows when
  // it does not in time.
  testing::AssertionResult shows(DevicePoint place, QColor color, int tolerance = 0,
                                 std::chrono::milliseconds limit = std::chrono::seconds(60)) const;

 private:
  XServer server_;
  std::unique_ptr<WindowManager> manager_;
  std::unique_ptr<CompositingManager> compositor_;
  XClient painter_;
  Robot mouse_;
};

inline constexpr DeviceRect loupeAtStart{553, 313, 175, 175};
inline constexpr DevicePoint loupeCentre{640, 400};

// A point on the move chip of a loupe with this device rectangle at scale 1, outside the corner, which would
// win.
inline DevicePoint moveChipOf(const DeviceRect& loupe) { return {loupe.right() - 18, loupe.y + 18}; }

// A pixel of the frame's line, between two handles, and the line's colours over middle grey: nearly opaque,
// and half transparent when locked.
inline DevicePoint onFrameLine(const DeviceRect& loupe) { return {loupe.x, loupe.y + loupe.height / 4}; }
inline constexpr QColor frameYellow(0xFA, 0xD3, 0x11);
inline constexpr QColor frameGrey(0x98, 0x98, 0x9B);
inline constexpr int frameTolerance = 6;

// A point inside the loupe's edge band.
inline DevicePoint leftBandOf(const DeviceRect& loupe) { return {loupe.x + 5, loupe.y + loupe.height / 2}; }

}  // namespace velicor::test
