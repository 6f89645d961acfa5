#include "scopes/scope_words.h"

#include <chrono>
#include <cmath>
#include <utility>

#include <QAccessible>

#include "analysis/notification_names.h"
#include "platform/notifications/notification_center.h"
#include "scopes/scope_view.h"

namespace velicor {

namespace {

// Often enough for words that are read aloud.
constexpr auto restTime = std::chrono::seconds(2);

QString percentage(double share) { return QString::number(std::lround(share * 100)) + QLatin1Char('%'); }

QString rangeText(const QString& channel, const ScopeReading::Range& range) {
  return QStringLiteral("%1 %2 to %3").arg(channel, percentage(range.lowest), percentage(range.highest));
}

}  // namespace

QString scope_words::vectorscope(const ScopeReading& reading) {
  return QStringLiteral("%1 on the skin line, %2 too green, %3 too pink, %4 without color")
      .arg(percentage(reading.onLine), percentage(reading.tooGreen), percentage(reading.tooPink),
           percentage(reading.colourless));
}

QString scope_words::parade(const ScopeReading& reading) {
  return rangeText(QStringLiteral("red"), reading.channels[0]) + QStringLiteral(", ") +
         rangeText(QStringLiteral("green"), reading.channels[1]) + QStringLiteral(", ") +
         rangeText(QStringLiteral("blue"), reading.channels[2]);
}

ScopeNarrator::ScopeNarrator(std::shared_ptr<MetalProcessor> processor, ScopeView& vectorscope, ScopeView& parade)
    : processor_(std::move(processor)),
      vectorscope_(vectorscope),
      parade_(parade),
      life_(std::make_shared<ScopeNarrator*>(this)) {
  if (!processor_) return;
  rest_.setSingleShot(true);
  rest_.setInterval(restTime);
  rest_.callOnTimeout(&rest_, [this] { tell(); });
  scopesReady_ = notifications::NotificationCenter::defaultCenter().addObserver(velicorScopesReady, [this] {
    stale_ = true;
    tell();
  });
  vectorscope_.onAsked = parade_.onAsked = [this] { tell(); };
}

ScopeNarrator::~ScopeNarrator() { vectorscope_.onAsked = parade_.onAsked = nullptr; }

void ScopeNarrator::tell() {
  if (!stale_ || rest_.isActive() || !QAccessible::isActive() || !vectorscope_.isVisible()) return;
  stale_ = false;
  rest_.start();
  processor_->readScopes([life = std::weak_ptr(life_)](const std::optional<ScopeReading>& reading) {
    if (const auto self = life.lock()) (*self)->show(reading);
  });
}

void ScopeNarrator::show(const std::optional<ScopeReading>& reading) {
  vectorscope_.setReading(reading ? scope_words::vectorscope(*reading) : QString());
  parade_.setReading(reading ? scope_words::parade(*reading) : QString());
}

}  // namespace velicor
