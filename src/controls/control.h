#pragma once

#include <QPointer>
#include <QRectF>
#include <QWidget>

#include "controls/accessible.h"
#include "controls/drawing.h"

namespace velicor::controls {

class FocusRing;

// Of every small control: the least height that the pointer hits with ease.
inline constexpr int controlHeight = 20;

// A widget that the user works with, drawn by us. Takes the keyboard by Tab and by click; the ring around it
// shows once keys are used. Main thread.
//
// Every control of this folder has a value, or none, and one closure: setting the value from the program
// never calls it, every change by the user does, on every movement. A closure may hide its control but not
// destroy it, except where it says so.
class Control : public QWidget, public Accessible {
 public:
  explicit Control(QWidget* parent = nullptr);
  ~Control() override;

  // The visible shape that the ring goes around.
  virtual QRectF outline() const { return rect(); }
  virtual double outlineRadius() const { return 3; }

  Touch touch() const;

  // The touch of the control that this widget is part of.
  static Touch touchOf(const QWidget& widget);

 protected:
  bool event(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void changeEvent(QEvent* event) override;
  void hideEvent(QHideEvent* event) override;

  bool isPressed() const { return pressed_; }
  void setPressed(bool pressed);

  // Whether the user came here by keys rather than by the mouse.
  bool usesKeys() const { return usesKeys_; }

 private:
  void noteInput(bool keys);
  void setRing(bool on);

  QPointer<FocusRing> ring_;
  bool usesKeys_ = false;
  bool pressed_ = false;
};

// A control that does one thing when it is clicked: by a press and release inside it, by Space, or by Return
// where the window has no default button.
class ButtonControl : public Control {
 public:
  using Control::Control;

  // As if the user had done it; nothing while disabled.
  void click();

  bool canBeActivated() const override { return true; }
  void activateAccessibly() override { click(); }

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;

  // What the click does. May destroy the button.
  virtual void activate() = 0;

 private:
  bool tracking_ = false;  // a press of the mouse has begun here
};

}  // namespace velicor::controls
