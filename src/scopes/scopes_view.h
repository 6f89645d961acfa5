#pragma once

#include <functional>
#include <memory>

#include <QWidget>

#include "app/app_state.h"
#include "capture/capture_manager.h"
#include "scopes/mode_tabs.h"
#include "scopes/scroll_column.h"

namespace velicor {

namespace controls {
class Label;
class MiniSlider;
class SegmentedPicker;
class Switch;
}  // namespace controls

namespace desktop {
class Desktop;
}

class ErrorBlock;
class Graticule;
class LegendView;
class MoreBelow;
class PaletteEditor;
class ScopeNarrator;
class ScopeView;

// What the scopes panel shows: the modes, the controls, the two scopes with the palette editor and the legend. Shows
// the state and the capture as they are, within a turn of the event loop after any change; the user's changes go to
// the state and nowhere else. Main thread.
class ScopesView : public QWidget {
 public:
  // All three outlive the view. Lengths are points; the toolkit places whole ones.
  ScopesView(AppState& state, CaptureManager& capture, double scopeWidth, double legendHeight,
             desktop::Desktop& desktop);
  ~ScopesView() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  // The pieces, from top to bottom; each is made once.
  QWidget* header();
  QWidget* modeTabs();
  QWidget* hairline();
  QWidget* controls();
  QWidget* regionRow();
  QWidget* opacityRow();
  QWidget* rateRow();
  QWidget* scrollArea();
  QWidget* scopes();
  ScopeView* scope(const QString& name, double aspect,
                   std::function<std::shared_ptr<gpu::Texture>(const MetalProcessor&)> picture, Graticule* graticule);
  QWidget* paletteEditor();
  QWidget* legend();

  void observe();
  void refreshSoon();
  void refresh();

  AppState& state_;
  CaptureManager& capture_;
  desktop::Desktop& desktop_;
  const int scopeWidth_;
  const int legendHeight_;

  ModeTabs* tabs_ = nullptr;
  controls::Label* region_ = nullptr;
  controls::Switch* lock_ = nullptr;
  controls::MiniSlider* opacity_ = nullptr;
  controls::Label* percentage_ = nullptr;
  controls::SegmentedPicker* rate_ = nullptr;
  ScrollColumn* scrolled_ = nullptr;
  MoreBelow* moreBelow_ = nullptr;
  std::unique_ptr<ScopeNarrator> narrator_;
  PaletteEditor* editor_ = nullptr;
  QWidget* hairlineBelowEditor_ = nullptr;
  LegendView* legendView_ = nullptr;
  controls::Label* shortcut_ = nullptr;
  ErrorBlock* error_ = nullptr;

  std::vector<Subscription> subscriptions_;
  std::shared_ptr<bool> pending_;  // a refresh that waits for its turn
};

}  // namespace velicor
