#pragma once

#include <functional>

#include <QPointer>
#include <QScrollArea>

class QVBoxLayout;

namespace velicor {

// A column that scrolls where it is higher than its place, by the wheel and by the page keys, without showing how
// far. What gets the keyboard in it comes into sight. Main thread.
class ScrollColumn : public QScrollArea {
 public:
  explicit ScrollColumn(QWidget* parent = nullptr);

  // Of the column, to be filled; without margins and spacing.
  QVBoxLayout& column() const { return *column_; }

  // Whether the key was one that scrolls.
  bool scrollBy(int key);

  // Hears whether a part of the column lies below its place, after that has changed.
  std::function<void(bool isMore)> onMoreBelow;

  // Scrolls to a part of the column once it is laid out, and keeps to it until the user scrolls or moves the
  // keyboard.
  void bringIntoSight(QWidget& part);

 protected:
  void wheelEvent(QWheelEvent* event) override;

 private:
  void followFocus(QWidget* focused);
  void followLayout();
  void noteMoreBelow();

  QVBoxLayout* column_;
  QPointer<QWidget> wanted_;
  bool isMoreBelow_ = false;
};

}  // namespace velicor
