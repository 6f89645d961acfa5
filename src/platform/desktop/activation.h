#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace velicor::desktop {

// How the program counts among those that run: as one with an entry in the taskbar, or as one that only has
// its status icon.
enum class ActivationPolicy { regular, accessory };

// The program's place in the taskbar. One window stands for the whole program there, while it is shown and the
// policy is regular; all others are left out. Main thread.
class Activation : public QObject {
 public:
  // Made after the toolkit's application object.
  Activation();

  ActivationPolicy policy() const { return policy_; }
  void setPolicy(ActivationPolicy policy);

  // Which window stands for the program; one that the window manager knows. Bypassing windows can't.
  void setRepresentative(QWidget& window);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void apply(QWidget& window) const;

  ActivationPolicy policy_ = ActivationPolicy::accessory;
  QPointer<QWidget> representative_;
};

}  // namespace velicor::desktop
