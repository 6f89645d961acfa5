#include "app/wishes.h"

#include "app/app_delegate.h"
#include "app/app_state.h"
#include "loupe/loupe_controller.h"
#include "menubar/menu_bar_controller.h"
#include "platform/desktop/application.h"

namespace velicor {

std::optional<MetalProcessor::Mode> modeOf(Wish wish) {
  switch (wish) {
    case Wish::original: return MetalProcessor::Mode::original;
    case Wish::skin: return MetalProcessor::Mode::skin;
    case Wish::exposure: return MetalProcessor::Mode::exposure;
    case Wish::show:
    case Wish::toggle:
    case Wish::quit: break;
  }
  return std::nullopt;
}

void fulfil(std::uint32_t wish) {
  const auto known = static_cast<Wish>(wish);
  if (known == Wish::quit) return desktop::terminate();
  const auto menuBar = AppDelegate::menuBar.lock();
  if (!menuBar) return;
  if (known == Wish::toggle) return menuBar->toggle();
  if (const auto mode = modeOf(known)) {
    AppState::shared().setMode(*mode);
    // Asked for from the midst of other work.
    return menuBar->bringForward();
  }
  menuBar->bringBack();
  // Who starts it again to get at it is perhaps without a mouse.
  const auto loupe = AppState::shared().loupe.lock();
  if (known == Wish::show && loupe && !loupe->frameView().panelVisible) loupe->takeKeyboard();
}

}  // namespace velicor
