#include "platform/tray/status_item.h"

#include <chrono>
#include <utility>

#include "platform/log/log.h"
#include "platform/tray/legacy_tray.h"
#include "platform/tray/status_notifier.h"

namespace velicor::tray {

namespace {

// A session's panel may start after its programs.
constexpr auto hostPatience = std::chrono::seconds(5);

}  // namespace

StatusItem::StatusItem(desktop::Desktop& desktop, dispatch::Clock& clock, QString title, TemplateIcon icon)
    : desktop_(desktop),
      title_(std::move(title)),
      icon_(std::move(icon)),
      notifier_(std::make_unique<StatusNotifier>(title_, icon_)),
      life_(std::make_shared<StatusItem*>(this)) {
  notifier_->presenceChanged = [this] { followPresence(); };
  if (MenuExporter* exporter = notifier_->menu()) {
    exporter->willOpen = [this] {
      if (menuWillOpen) menuWillOpen();
    };
    notifier_->item()->activated = [this] { openMenu(); };
  }
  followPresence();
  clock.callAfter(hostPatience, [life = std::weak_ptr(life_)] {
    if (const auto self = life.lock()) (*self)->reportAbsence();
  });
}

StatusItem::~StatusItem() = default;

void StatusItem::setMenu(desktop::Menu menu) {
  menu_ = std::move(menu);
  if (MenuExporter* exporter = notifier_->menu()) exporter->setMenu(menu_);
}

bool StatusItem::isShown() const {
  return notifier_->presence() == StatusNotifier::Presence::shown || (legacy_ && LegacyTray::isThere());
}

void StatusItem::followPresence() {
  const bool needed = notifier_->presence() == StatusNotifier::Presence::noBusOrWatcher;
  if (needed == (legacy_ != nullptr)) return;
  legacy_ = needed ? std::make_unique<LegacyTray>(desktop_, title_, icon_, [this] { openMenu(); }) : nullptr;
}

void StatusItem::openMenu() {
  if (menuWillOpen) menuWillOpen();
  if (popUp) popUp(menu_);
}

void StatusItem::reportAbsence() const {
  if (isShown()) return;
  log::Logger("desktop").info("no status area: the shortcut, or starting the program again, brings hidden windows back");
}

}  // namespace velicor::tray
