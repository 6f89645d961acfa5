#pragma once

#include <memory>
#include <optional>

#include <QString>
#include <QTimer>

#include "analysis/metal_processor.h"
#include "platform/notifications/signal.h"

namespace velicor {

class ScopeView;

namespace scope_words {

// Such as "42% on the skin line, 5% too green, 3% too pink, 30% without color".
QString vectorscope(const ScopeReading& reading);

// Such as "red 12% to 80%, green 10% to 76%, blue 0% to 60%".
QString parade(const ScopeReading& reading);

}  // namespace scope_words

// Puts the scopes into words for assistive tools: every few seconds at most, only while something asks for such words
// and the scopes can be seen. Main thread.
class ScopeNarrator {
 public:
  // The views outlive it; without a processor they stay without words.
  ScopeNarrator(std::shared_ptr<MetalProcessor> processor, ScopeView& vectorscope, ScopeView& parade);
  ~ScopeNarrator();
  ScopeNarrator(const ScopeNarrator&) = delete;
  ScopeNarrator& operator=(const ScopeNarrator&) = delete;

 private:
  void tell();
  void show(const std::optional<ScopeReading>& reading);

  const std::shared_ptr<MetalProcessor> processor_;
  ScopeView& vectorscope_;
  ScopeView& parade_;
  bool stale_ = false;  // there are newer scopes than words
  QTimer rest_;         // runs since the last words were asked for
  Subscription scopesReady_;
  const std::shared_ptr<ScopeNarrator*> life_;  // for the answer, which may come late
};

}  // namespace velicor
