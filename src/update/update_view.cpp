#include "update/update_view.h"

#include <QPointer>
#include <QVBoxLayout>

#include "platform/dispatch/main_queue.h"
#include "update/update_checker.h"
#include "update/update_content.h"

namespace velicor {

namespace {

constexpr int padding = 24;
constexpr int spacing = 14;

}  // namespace

UpdateView::UpdateView(UpdateChecker& checker, QWidget* parent) : QWidget(parent), checker_(checker) {
  willChange_ = checker_.willChange.subscribe([this] { refreshSoon(); });
  refresh();
}

// Several changes come together, and a button that caused them may still be at work.
void UpdateView::refreshSoon() {
  if (refreshing_) return;
  refreshing_ = true;
  dispatch::MainQueue::shared().async([view = QPointer<UpdateView>(this)] {
    if (view) view->refresh();
  });
}

void UpdateView::refresh() {
  refreshing_ = false;
  delete content_;
  content_ = new QWidget(this);
  auto* stack = new QVBoxLayout(content_);
  stack->setContentsMargins(padding, padding, padding, padding);
  stack->setSpacing(spacing);
  fillUpdateContent(*stack, checker_);
  if (onContentChange) onContentChange();
  resizeEvent(nullptr);
  content_->show();
}

int UpdateView::heightForWidth(int available) const {
  const QLayout* stack = content_->layout();
  return stack->hasHeightForWidth() ? stack->totalHeightForWidth(available) : stack->totalSizeHint().height();
}

// In the middle, where there is more room than it needs.
void UpdateView::resizeEvent(QResizeEvent*) {
  const int needed = heightForWidth(size().width());
  content_->setGeometry(0, (size().height() - needed) / 2, size().width(), needed);
}

}  // namespace velicor
