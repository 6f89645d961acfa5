#pragma once

#include <QWidget>

namespace velicor {

// A view whose children all fill it, however it is resized.
class LoupeContainer : public QWidget {
 public:
  using QWidget::QWidget;

 protected:
  void resizeEvent(QResizeEvent*) override {
    for (QWidget* child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
      child->setGeometry(rect());
  }
};

}  // namespace velicor
