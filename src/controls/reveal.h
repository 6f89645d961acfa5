#pragma once

#include <QWidget>

#include "controls/motion.h"

namespace velicor::controls {

// Shows its content, or nothing: growing and shrinking between the two in a short motion that moves what lies
// below. Content that is out of sight takes neither room nor keyboard. Main thread.
class Reveal : public QWidget {
 public:
  Reveal(QWidget* content, bool expanded, QWidget* parent = nullptr);

  bool isExpanded() const { return motion_.target() == 1; }
  void setExpanded(bool expanded);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool event(QEvent* event) override;

 private:
  void apply();
  void place();

  QWidget* const content_;
  Motion motion_;  // 0 nothing … 1 all
};

}  // namespace velicor::controls
