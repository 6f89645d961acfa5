#include "menubar/shortcut_recorder.h"

#include <utility>

#include "menubar/hot_key.h"
#include "menubar/recorder_view.h"
#include "platform/base/product.h"

namespace velicor {

namespace {

constexpr QSize contentSize(380, 150);

}  // namespace

ShortcutRecorder::ShortcutRecorder(desktop::Desktop& desktop, settings::Settings& settings,
                                   std::function<void()> onChange)
    : onChange_(std::move(onChange)), life_(std::make_shared<ShortcutRecorder*>(this)) {
  auto view = std::make_unique<RecorderView>();
  view->resize(contentSize);
  view->onCapture = [life = std::weak_ptr(life_), &settings](std::uint32_t keyCode, std::uint32_t modifiers) {
    apply(life, settings, keyCode, modifiers);
  };
  view->onReset = [life = std::weak_ptr(life_), &settings] {
    apply(life, settings, HotKey::defaultKeyCode, HotKey::defaultModifiers);
  };
  const QString title = QString::fromStdString(std::string(product::name) + " Shortcut");
  panel_ = std::make_unique<controls::UtilityPanel>(desktop, title, std::move(view));
}

ShortcutRecorder::~ShortcutRecorder() = default;

void ShortcutRecorder::show() {
  panel_->centre();
  panel_->makeKeyAndOrderFront();
}

void ShortcutRecorder::apply(const std::weak_ptr<ShortcutRecorder*>& recorder, settings::Settings& settings,
                             std::uint32_t keyCode, std::uint32_t modifiers) {
  HotKey& hotKey = HotKey::shared();
  hotKey.setKeyCode(keyCode);
  hotKey.setModifiers(modifiers);
  settings.setInteger(HotKey::keyCodeSetting, keyCode);
  settings.setInteger(HotKey::modifiersSetting, modifiers);
  hotKey.registerHotKey();
  if (const auto living = recorder.lock()) {
    const auto onChange = (*living)->onChange_;
    if (onChange) onChange();
  }
  if (const auto living = recorder.lock()) (*living)->panel_->orderOut();
}

}  // namespace velicor
