#pragma once

#include <functional>
#include <memory>
#include <string>

#include "analysis/metal_processor.h"
#include "capture/capture_manager.h"
#include "palette/palette.h"
#include "platform/base/geometry.h"
#include "platform/desktop/screen.h"
#include "platform/notifications/published.h"
#include "platform/notifications/signal.h"
#include "platform/screencapture/screen_capture.h"
#include "platform/settings/settings.h"

namespace velicor {

class LoupeController;

// The user's settings, and the joint of the frame pipeline: owns the capture session and the analysis
// processor, applies every change of a setting to whatever acts on it, and saves all settings after it. Main
// thread.
class AppState {
 public:
  // What the state stands on. The references outlive the state and what its capture has under way.
  struct Environment {
    settings::Settings& settings;
    const desktop::ScreenList& screenList;
    std::shared_ptr<screencapture::Service> captureService;
    dispatch::Clock& clock;
    std::function<std::shared_ptr<MetalProcessor>()> makeProcessor;  // may give none
  };

  // Makes `shared` available while it lives, and destroys the shared state with itself: kept by main().
  class Installation {
   public:
    explicit Installation(Environment environment);
    ~Installation();
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;
  };

  // The program's one state, made at the first call. Without an installation the process ends with a log
  // line.
  static AppState& shared();

  // Restores the stored settings; what is missing or unusable keeps its default without a word.
  explicit AppState(Environment environment);
  ~AppState();
  AppState(const AppState&) = delete;
  AppState& operator=(const AppState&) = delete;

  // Called before one of the six properties below changes, or is set to what it was.
  Signal<> willChange;

  // Setting one, to an equal value too, applies it everywhere and saves all settings.
  MetalProcessor::Mode mode() const { return *mode_; }
  void setMode(MetalProcessor::Mode mode);

  // The loupe can't be moved or resized.
  bool locked() const { return *locked_; }
  void setLocked(bool locked);

  // Of the analysed picture inside the loupe, 0…1. At 0 no preview is computed.
  double opacity() const { return *opacity_; }
  void setOpacity(double opacity);

  // Captured frames a second: 10, 15 or 30.
  int fps() const { return *fps_; }
  void setFps(int fps);

  const Palette& palette() const { return *palette_; }
  void setPalette(const Palette& palette);

  // Size of the loupe in points, such as "640 × 360"; empty until it was reported.
  const std::string& regionText() const { return *regionText_; }

  // Shows or hides the scopes panel; set at start-up.
  std::function<void()> togglePanel;

  CaptureManager capture;

  // None where the analysis can't run on this machine; frames are then captured to no effect.
  const std::shared_ptr<MetalProcessor> processor;

  // Set at start-up once the loupe exists, followed by applyRestoredSettings().
  std::weak_ptr<LoupeController> loupe;

  // Writes the settings; does nothing during creation.
  void saveSettings();

  // Hands the settings to the loupe, the processor and the capture session; saves nothing.
  void applyRestoredSettings();

  // The loupe's frame in desktop points, after each change. Captures it from the screen that shows most of
  // it.
  void loupeFrameChanged(const DesktopRect& rect);

 private:
  void restoreSettings();
  void connectFramePath();
  static int scopeDivider(int fps);

  // The loupe's share of a setting; nothing without a loupe, or without its preview.
  void applyModeToLoupe() const;
  void applyLockToLoupe() const;
  void applyOpacityToLoupe() const;

  settings::Settings& settings_;
  const desktop::ScreenList& screenList_;
  bool restoring_ = true;

  Published<MetalProcessor::Mode> mode_{willChange, MetalProcessor::Mode::skin};
  Published<bool> locked_{willChange, false};
  Published<double> opacity_{willChange, 1.0};
  Published<int> fps_{willChange, 15};
  Published<Palette> palette_{willChange, Palette::standard()};
  Published<std::string> regionText_{willChange, std::string()};
};

}  // namespace velicor
