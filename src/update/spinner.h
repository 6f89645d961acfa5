#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace velicor {

// A small round of strokes that says that something goes on, without saying how far it is. Turns while it can
// be seen, more calmly where the desktop asks for less motion.
class Spinner : public QWidget {
 public:
  explicit Spinner(QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  QBasicTimer timer_;
  int brightest_ = 0;  // of the strokes
};

}  // namespace velicor
