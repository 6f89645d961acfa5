#include "app/about_panel.h"

#include <cmath>
#include <memory>

#include <QPainter>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <QVBoxLayout>

#include "app/application_icon.h"
#include "app/running_version.h"
#include "controls/label.h"
#include "controls/utility_panel.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"

namespace velicor {

namespace {

constexpr int textWidth = 340;
constexpr QMargins padding(24, 8, 24, 24);
constexpr int iconSide = 64;
constexpr double lineSpacing = 2;

constexpr const char* credits =
    "Live skin tone and exposure analysis for anything on your screen.\n\n"
    "Drag the loupe over any image — DaVinci Resolve, Premiere, a browser — and Velicor reads the pixels "
    "underneath it in real time.\n\n"
    "• Skin Indicator marks pixels on the vectorscope skin-tone line yellow, and those drifting off it green (too "
    "green) or pink (too pink).\n"
    "• Exposure Heatmap maps luminance to a false-color scale, with the skin target at the yellow band and clipping "
    "in red.\n"
    "• The vectorscope and RGB parade always read the original pixels, never the false color.\n\n"
    "Requires the Screen Recording permission. Frames are analyzed on the GPU and discarded immediately — Velicor "
    "records nothing, stores nothing and sends nothing anywhere.";

class Icon : public QWidget {
 public:
  Icon() { setFixedSize(iconSide, iconSide); }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    application_icon::draw(painter, iconSide);
  }
};

// Text in lines that are set apart, in the colour of secondary labels.
class Credits : public QWidget {
 public:
  Credits() {
    const QString text = QString::fromUtf8(credits);
    setAccessibleName(text);
    text_.setDocumentMargin(0);
    text_.setDefaultFont(desktop::interfaceFont(11));
    text_.setPlainText(text);
    text_.setTextWidth(textWidth);
    QTextBlockFormat format;
    format.setAlignment(Qt::AlignLeft);
    format.setLineHeight(lineSpacing, QTextBlockFormat::LineDistanceHeight);
    QTextCursor all(&text_);
    all.select(QTextCursor::Document);
    all.mergeBlockFormat(format);
    QTextCharFormat color;
    color.setForeground(look::secondaryText);
    all.mergeCharFormat(color);
    setFixedSize(textWidth, static_cast<int>(std::ceil(text_.size().height())));
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    text_.drawContents(&painter);
  }

 private:
  QTextDocument text_;
};

class Content : public QWidget {
 public:
  Content() {
    using controls::Label;
    using controls::TextColor;
    setFocusPolicy(Qt::StrongFocus);
    auto* stack = new QVBoxLayout(this);
    stack->setContentsMargins(padding);
    stack->setSpacing(0);
    stack->addWidget(new Icon, 0, Qt::AlignHCenter);
    stack->addSpacing(12);
    stack->addWidget(new Label(QString::fromStdString(std::string(product::name)), {.size = 17, .weight = QFont::DemiBold}),
                     0, Qt::AlignHCenter);
    stack->addSpacing(4);
    const QString version = QStringLiteral("Version ") + QString::fromStdString(runningVersion());
    stack->addWidget(new Label(version, {.size = 11, .color = TextColor::secondary}), 0, Qt::AlignHCenter);
    stack->addSpacing(16);
    stack->addWidget(new Credits);
    setFixedSize(sizeHint());
  }
};

desktop::Desktop*& aboutDesktop() {
  static desktop::Desktop* desktop = nullptr;
  return desktop;
}

std::unique_ptr<controls::UtilityPanel>& made() {
  static auto* const panel = new std::unique_ptr<controls::UtilityPanel>;
  return *panel;
}

}  // namespace

AboutPanel::Installation::Installation(desktop::Desktop& desktop) { aboutDesktop() = &desktop; }

AboutPanel::Installation::~Installation() {
  made().reset();
  aboutDesktop() = nullptr;
}

void AboutPanel::show() {
  if (!aboutDesktop()) return;
  auto& panel = made();
  if (!panel) {
    const QString title = QStringLiteral("About ") + QString::fromStdString(std::string(product::name));
    panel = std::make_unique<controls::UtilityPanel>(*aboutDesktop(), title, std::make_unique<Content>());
  }
  if (!panel->isVisible()) panel->centre();
  panel->makeKeyAndOrderFront();
}

controls::UtilityPanel* AboutPanel::panel() { return made().get(); }

}  // namespace velicor
