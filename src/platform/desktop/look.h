#pragma once

#include <QColor>

// The interface's colours. Paint code takes them from here only.
namespace velicor::look {

inline constexpr QColor systemYellow(0xFF, 0xD6, 0x0A);
inline constexpr QColor systemGrey(0x98, 0x98, 0x9D);

// The accent of every control, frame and hint.
inline constexpr QColor accent = systemYellow;

inline constexpr QColor panelGround(0x1E, 0x1E, 0x1E);
inline constexpr QColor scopeGround(0x05, 0x05, 0x05);
inline constexpr QColor errorText(0xFF, 0x69, 0x61);
inline constexpr QColor successText(0x30, 0xD1, 0x58);

// The same colour at an opacity of 0…1.
inline QColor faded(QColor color, double alpha) {
  color.setAlphaF(static_cast<float>(alpha));
  return color;
}

// White at an opacity of 0…1. NOLINTNEXTLINE(bugprone-incorrect-roundings): known to the compiler
constexpr QColor white(double alpha) { return {255, 255, 255, static_cast<int>(alpha * 255 + 0.5)}; }

inline constexpr QColor primaryText = white(0.92);
inline constexpr QColor secondaryText = white(0.64);
inline constexpr QColor tertiaryText = white(0.54);
inline constexpr QColor hairline = white(0.08);
inline constexpr QColor panelEdge = white(0.11);    // sets it off from what is as dark
inline constexpr QColor popoverEdge = white(0.22);  // from a panel below
inline constexpr QColor controlTrack = white(0.16);
inline constexpr QColor controlTrackLit = white(0.22);
inline constexpr QColor controlTrackPressed = white(0.11);
inline constexpr QColor controlKnob = white(1);
inline constexpr QColor controlKnobPressed(0xD8, 0xD8, 0xD8);
inline constexpr QColor controlKnobDisabled(0x80, 0x80, 0x80);
inline constexpr QColor focusRing(0xFF, 0xD6, 0x0A, 153);  // the accent

}  // namespace velicor::look
