#include "scopes/error_block.h"

#include <QVBoxLayout>

#include "controls/label.h"
#include "controls/push_button.h"
#include "platform/desktop/privacy_settings.h"
#include "platform/log/log.h"

namespace velicor {

namespace {

constexpr auto screenRecordingSettings =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";
constexpr int topPadding = 4;
constexpr int gap = 6;

void openSettings() {
  const Status opened = desktop::openPrivacySettings(desktop::systemOpener(), screenRecordingSettings);
  if (!opened) log::general("no screen recording settings to open: " + opened.error().description);
}

}  // namespace

ErrorBlock::ErrorBlock(QWidget* parent)
    : QWidget(parent),
      text_(new controls::Label({}, {.size = 11, .color = controls::TextColor::error}, controls::TextFit::wrap)) {
  auto* button = new controls::PushButton(QStringLiteral("Open Screen Recording Settings"));
  button->onClick = openSettings;
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, topPadding, 0, 0);
  column->setSpacing(gap);
  column->addWidget(text_);
  column->addWidget(button, 0, Qt::AlignLeft);
  hide();
}

void ErrorBlock::setError(const std::optional<std::string>& text) {
  if (text) text_->setText(QString::fromStdString(*text));
  setVisible(text.has_value());
}

}  // namespace velicor
