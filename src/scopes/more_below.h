#pragma once

#include <QWidget>

namespace velicor {

// A quiet sign that a column goes on below its place: a hairline where it is cut off, and a small chevron
// under that. The mouse passes it by. Main thread.
class MoreBelow : public QWidget {
 public:
  explicit MoreBelow(QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace velicor
