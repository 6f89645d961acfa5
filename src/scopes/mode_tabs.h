#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QWidget>

#include "analysis/metal_processor.h"
#include "controls/accessible.h"

namespace velicor {

// The row of tabs that selects the analysis mode: equal shares of the width, the current one underlined. Each is a stop on
// the way of Tab; the arrow keys select its neighbours too. Main thread.
class ModeTabs : public QWidget, public controls::Accessible {
 public:
  explicit ModeTabs(MetalProcessor::Mode mode, QWidget* parent = nullptr);
  ~ModeTabs() override;

  // A tab was clicked, the current one's too.
  std::function<void(MetalProcessor::Mode mode)> onSelect;

  // The underline fades over to it.
  void setMode(MetalProcessor::Mode mode);

  // The clickable tab, for its place and name.
  QWidget& tab(MetalProcessor::Mode mode) const;

  QAccessible::Role accessibleRole() const override { return QAccessible::PageTabList; }
  QString accessibleText() const override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  class Tab;
  std::vector<Tab*> tabs_;  // in the order of the modes
};

}  // namespace velicor
