#pragma once

#include <functional>

#include <QWidget>

#include "platform/notifications/signal.h"

namespace velicor {

class UpdateChecker;

// What the update window shows: the checker's phase and release, as they are now. Lives no longer than the
// checker. Main thread.
class UpdateView : public QWidget {
 public:
  UpdateView(UpdateChecker& checker, QWidget* parent);

  static constexpr int layoutWidth = 420;

  // Called when the content, and with it heightForWidth(), may have changed.
  std::function<void()> onContentChange;

  int heightForWidth(int width) const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void refreshSoon();
  void refresh();

  UpdateChecker& checker_;
  QWidget* content_ = nullptr;
  bool refreshing_ = false;
  Subscription willChange_;
};

}  // namespace velicor
