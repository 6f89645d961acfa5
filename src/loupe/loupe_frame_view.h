#pragma once

#include <array>
#include <functional>

#include <QWidget>

#include "controls/accessible.h"
#include "loupe/loupe_drawing.h"
#include "loupe/loupe_geometry.h"
#include "loupe/sparse_picture.h"
#include "platform/base/geometry.h"
#include "platform/desktop/cursor.h"

namespace velicor {

// The visible frame of the loupe: outline, resize handles, two chips in the top-right corner and, during a
// drag, the size. Tells which part of the frame the mouse is over and reports drags; moves nothing itself. The keys of
// loupe_keys, while it has the keyboard, are drags of one step.
//
// Points of this view have their origin at its bottom-left corner and y up. It counts as having a window
// while it is in a desktop panel. Main thread.
class LoupeFrameView : public QWidget, public controls::Accessible {
 public:
  using Zone = LoupeZone;

  explicit LoupeFrameView(const QRect& frame, QWidget* parent = nullptr);

  // Every step of a drag: the zone that was taken hold of, the mouse's way since then (y up), and the
  // window's frame at that time.
  std::function<void(Zone zone, DesktopSize displacement, DesktopRect startFrame)> onDrag;

  // A click on the panel chip was released over it, or Space was struck.
  std::function<void()> onPanelToggle;

  // Whatever was pressed has been let go, and the window is where it was dragged to.
  std::function<void()> onRelease;
  std::function<void()> onKeyRelease;

  // The user has had enough of the keyboard being here.
  std::function<void()> onLeave;

  // A locked loupe can't be moved or resized and is drawn grey. Set from outside, followed by update().
  bool isLocked = false;

  // Whether the scopes panel is showing; dims its chip where not. As above.
  bool panelVisible = true;

  static constexpr double margin = loupe_geometry::margin;

  FrameRect bounds() const;
  Zone zone(FramePoint point) const;
  desktop::Cursor cursor(Zone zone) const;
  std::array<FramePoint, 8> handlePoints() const;
  FrameRect panelChip() const;

  // false without a window.
  bool isScreenPointOverPanelChip(DesktopPoint point) const;

  // What the mouse at this place looks like; the arrow without a window.
  desktop::Cursor cursorAtScreenPoint(DesktopPoint point) const;

  Zone dragZone() const { return dragZone_; }
  DesktopPoint dragStartMouse() const { return dragStartMouse_; }
  DesktopRect dragStartFrame() const { return dragStartFrame_; }
  bool pressActive() const { return pressActive_; }

  // A move or resize is under way.
  bool isInteracting() const { return isInteracting_; }

  // Whether it says that it has the keyboard, as it does once the user came by keys or uses them.
  bool showsFocus() const { return usesKeys_ && hasFocus(); }
  void setUsesKeys(bool uses);

  // To be called when the window has another frame.
  void announceFrame();

  QAccessible::Role accessibleRole() const override { return QAccessible::Pane; }
  QString accessibleText() const override;
  QString accessibleDescription() const override;
  void describeState(QAccessible::State& state) const override;
  bool canBeActivated() const override { return true; }
  void activateAccessibly() override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  FramePoint locationOf(const QMouseEvent& event) const;
  desktop::Cursor cursorAt(FramePoint point) const;
  void mouseMoved(FramePoint point);
  void mouseDragged(const QMouseEvent& event);
  void abandonPress();
  void endKeyStep();

  // The frame as it was painted last, because it is painted again with every picture below it.
  struct Painted {
    LoupeAppearance appearance;
    QSize pixels;
    double scale = 0;
    friend bool operator==(const Painted&, const Painted&) = default;
  };
  static SparsePicture pictureOf(const Painted& wanted);

  Zone dragZone_ = Zone::move;
  DesktopPoint dragStartMouse_;
  DesktopRect dragStartFrame_;
  bool pressActive_ = false;
  bool isInteracting_ = false;
  bool keyStepActive_ = false;  // a key that moves or resizes is down
  bool usesKeys_ = false;
  Painted painted_;
  SparsePicture picture_;
};

}  // namespace velicor
