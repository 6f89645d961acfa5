#pragma once

#include <chrono>
#include <functional>

#include <QVariantAnimation>

namespace velicor::controls {

// A value that goes to its place, in 0.12 seconds where nothing else is asked for, fast at first and easing out;
// at once where the desktop asks for less motion. Main thread.
class Motion {
 public:
  static constexpr std::chrono::milliseconds usualTime{120};

  // The handler hears of every step, the last one included, as long as the motion lives.
  explicit Motion(double start, std::function<void()> onStep);
  Motion(const Motion&) = delete;
  Motion& operator=(const Motion&) = delete;

  double value() const { return value_; }
  double target() const { return target_; }
  bool isMoving() const { return animation_.state() == QAbstractAnimation::Running; }

  // From wherever it is now. `jumpTo` shows no motion; both do nothing more where that is the target already.
  void moveTo(double target, std::chrono::milliseconds time = usualTime);
  void jumpTo(double target);

 private:
  void step(double value);

  std::function<void()> onStep_;
  double value_;
  double target_;
  QVariantAnimation animation_;
};

}  // namespace velicor::controls
