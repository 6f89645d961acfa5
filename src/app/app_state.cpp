#include "app/app_state.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "analysis/notification_names.h"
#include "platform/notifications/notification_center.h"

namespace velicor {

namespace {

namespace key {
constexpr auto mode = "mode";
constexpr auto fps = "fps";
constexpr auto opacity = "opacity";
constexpr auto locked = "locked";
constexpr auto palette = "palette";
}  // namespace key

// Scopes are computed about this often a second, whatever the frame rate.
constexpr double scopesPerSecond = 10;

std::optional<MetalProcessor::Mode> storedMode(const settings::Settings& settings) {
  const auto raw = settings.integer(key::mode);
  return raw && std::in_range<int>(*raw) ? MetalProcessor::modeFrom(static_cast<int>(*raw)) : std::nullopt;
}

std::optional<int> storedFps(const settings::Settings& settings) {
  const auto raw = settings.integer(key::fps);
  if (raw != 10 && raw != 15 && raw != 30) return std::nullopt;
  return static_cast<int>(*raw);
}

double opacityFrom(double stored) { return std::isnan(stored) ? 0 : std::clamp(stored, 0.0, 1.0); }

// The first of the screens that show most of the rectangle; of no screens, the main one.
std::optional<desktop::Screen> screenFor(const DesktopRect& rect, const desktop::ScreenList& list) {
  const std::vector<desktop::Screen> screens = list.screens();
  if (screens.empty()) return list.mainScreen();
  const auto shownArea = [&rect](const desktop::Screen& screen) {
    return rect.intersection(screen.frame).area();
  };
  return *std::ranges::max_element(screens, {}, shownArea);  // of several largest, the first
}

std::string sizeText(const DesktopRect& rect) {
  const auto whole = [](double points) { return std::to_string(static_cast<long long>(points)); };
  return whole(rect.width) + " × " + whole(rect.height);
}

}  // namespace

AppState::AppState(Environment environment)
    : capture(std::move(environment.captureService), environment.clock),
      processor(environment.makeProcessor()),
      settings_(environment.settings),
      screenList_(environment.screenList) {
  restoreSettings();
  if (processor) {
    processor->mode = mode();
    processor->scopeDivider = scopeDivider(fps());
  }
  capture.setFps(fps());
  connectFramePath();
  restoring_ = false;
}

// No frame may hold the last reference to the processor: it is destroyed on this thread.
AppState::~AppState() { capture.setOnFrame({}); }

void AppState::restoreSettings() {
  if (const auto stored = storedMode(settings_)) setMode(*stored);
  if (const auto stored = storedFps(settings_)) setFps(*stored);
  if (const auto stored = settings_.number(key::opacity)) setOpacity(opacityFrom(*stored));
  setLocked(settings_.boolean(key::locked).value_or(false));
  if (const auto stored = settings_.stringList(key::palette)) setPalette(Palette(*stored));
}

void AppState::connectFramePath() {
  capture.setOnFrame([weak = std::weak_ptr(processor)](const PixelBufferRef& frame) {
    if (const auto present = weak.lock()) present->ingest(frame);
  });
  if (!processor) return;
  processor->onPreview = [] { notifications::NotificationCenter::defaultCenter().post(velicorPreviewReady); };
  processor->onScopes = [] { notifications::NotificationCenter::defaultCenter().post(velicorScopesReady); };
}

int AppState::scopeDivider(int fps) { return std::max(1, roundHalfAway(fps / scopesPerSecond)); }

void AppState::setMode(MetalProcessor::Mode mode) {
  mode_ = mode;
  if (processor) processor->mode = mode;
  applyModeToLoupe();
  if (processor) processor->reanalyze();
  saveSettings();
}

void AppState::setLocked(bool locked) {
  locked_ = locked;
  applyLockToLoupe();
  saveSettings();
}

void AppState::setOpacity(double opacity) {
  opacity_ = opacity;
  applyOpacityToLoupe();
  if (processor) {
    processor->previewEnabled = opacity > 0;
    processor->reanalyze();
  }
  saveSettings();
}

void AppState::setFps(int fps) {
  fps_ = fps;
  capture.setFps(fps);
  if (processor) processor->scopeDivider = scopeDivider(fps);
  saveSettings();
}

void AppState::setPalette(const Palette& palette) {
  palette_ = palette;
  if (processor) processor->setPalette(palette.buffer());
  saveSettings();
}

void AppState::saveSettings() {
  if (restoring_) return;
  settings_.setInteger(key::mode, MetalProcessor::id(mode()));
  settings_.setInteger(key::fps, fps());
  settings_.setReal(key::opacity, opacity());
  settings_.setBoolean(key::locked, locked());
  settings_.setStringList(key::palette, palette().stored());
}

void AppState::applyRestoredSettings() {
  applyModeToLoupe();
  applyLockToLoupe();
  applyOpacityToLoupe();
  if (processor) {
    processor->mode = mode();
    processor->previewEnabled = opacity() > 0;
    processor->setPalette(palette().buffer());
  }
  capture.setFps(fps());
}

void AppState::loupeFrameChanged(const DesktopRect& rect) {
  const auto screen = screenFor(rect, screenList_);
  if (!screen) return;
  capture.updateRegion(rect, *screen);
  regionText_ = sizeText(rect);
  saveSettings();
}

}  // namespace velicor
