#include "update/update_content.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <QHBoxLayout>
#include <QScrollArea>
#include <QVBoxLayout>

#include "controls/hairline.h"
#include "controls/label.h"
#include "controls/push_button.h"
#include "controls/symbol_image.h"
#include "platform/base/product.h"
#include "platform/desktop/application.h"
#include "update/readable.h"
#include "update/spinner.h"
#include "update/update_checker.h"
#include "update/update_view.h"
#include "update/update_window.h"

namespace velicor {

namespace {

using controls::Label;
using controls::PushButton;
using controls::TextColor;
using controls::TextFit;

constexpr controls::TextStyle callout{.size = 12, .color = TextColor::secondary};
constexpr controls::TextStyle calloutGreen{.size = 12, .color = TextColor::success};
constexpr controls::TextStyle titleBold{.size = 15, .weight = QFont::Bold};
constexpr controls::TextStyle body{.size = 13};

constexpr int progressSpacing = 10;
constexpr int symbolSpacing = 6;
constexpr int buttonSpacing = 8;
constexpr int noteSpacing = 4;

constexpr qsizetype longestShownVersion = 64;

// Notes that need more are scrolled.
constexpr int highestNotes = 320;

const std::string productName(product::name);

Label* wrapped(const QString& text, const controls::TextStyle& style) {
  return new Label(text, style, TextFit::wrap);
}

Label* wrapped(const std::string& text, const controls::TextStyle& style) {
  return wrapped(readable(text), style);
}

std::unique_ptr<QHBoxLayout> row(int spacing) {
  auto layout = std::make_unique<QHBoxLayout>();
  layout->setSpacing(spacing);
  return layout;
}

void addProgress(QVBoxLayout& stack, const QString& text) {
  auto line = row(progressSpacing);
  line->addWidget(new Spinner, 0, Qt::AlignVCenter);
  line->addWidget(new Label(text, callout), 1, Qt::AlignVCenter);
  stack.addLayout(line.release());
}

void addSymbolLabel(QVBoxLayout& stack, std::string_view symbol, const std::string& text,
                    const controls::TextStyle& style) {
  auto line = row(symbolSpacing);
  const auto weight =
      style.weight == QFont::Bold ? desktop::SymbolWeight::bold : desktop::SymbolWeight::regular;
  line->addWidget(new controls::SymbolImage(symbol, style.size, style.color, weight), 0, Qt::AlignTop);
  line->addWidget(wrapped(text, style), 1);
  stack.addLayout(line.release());
}

struct Button {
  QString title;
  std::function<void()> onClick;
};

// At the trailing edge; the last one is the default.
void addButtons(QVBoxLayout& stack, std::initializer_list<Button> buttons) {
  auto line = row(buttonSpacing);
  line->addStretch();
  for (const Button& button : buttons) {
    auto* added = new PushButton(button.title);
    added->onClick = button.onClick;
    added->setDefault(&button == buttons.end() - 1);
    line->addWidget(added);
  }
  stack.addLayout(line.release());
}

// Narrower than the window by the stack's own margins.
int heightOf(const QWidget& notes, const QVBoxLayout& stack) {
  const QMargins margins = stack.contentsMargins();
  return notes.layout()->totalHeightForWidth(UpdateView::layoutWidth - margins.left() - margins.right());
}

QWidget* scrolled(QWidget* notes) {
  auto* area = new QScrollArea;
  area->setFrameShape(QFrame::NoFrame);
  area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setWidgetResizable(true);
  area->setWidget(notes);
  area->setFixedHeight(highestNotes);
  return area;
}

void addNotes(QVBoxLayout& stack, const std::vector<std::string>& notes) {
  auto* list = new QWidget;
  auto* lines = new QVBoxLayout(list);
  lines->setContentsMargins({});
  lines->setSpacing(noteSpacing);
  for (const std::string& note : readableNotes(notes)) {
    lines->addWidget(wrapped("• " + note, body));
  }
  stack.addWidget(heightOf(*list, stack) > highestNotes ? scrolled(list) : list);
}

void addRelease(QVBoxLayout& stack, const Release& release) {
  const QString name = readable(productName + " ") + readable(release.version, longestShownVersion);
  stack.addWidget(wrapped(name + " is available", titleBold));
  stack.addWidget(wrapped("You have " + UpdateChecker::currentVersion() + ".", callout));
  if (release.notes && !release.notes->empty()) addNotes(stack, *release.notes);
  stack.addWidget(new controls::Hairline);
}

void addOffer(QVBoxLayout& stack, UpdateChecker& checker) {
  addButtons(stack,
             {{"Later", [&checker] { checker.snooze(); }}, {"Download", [&checker] { checker.download(); }}});
}

void addMounted(QVBoxLayout& stack) {
  stack.addWidget(
      wrapped("Drag " + productName +
                  " into your Applications folder, replacing the old copy, then open it again. Quit " +
                  productName + " first.",
              callout));
  addButtons(stack, {{readable("Quit " + productName), [] { desktop::terminate(); }}});
}

void addUpToDate(QVBoxLayout& stack) {
  addSymbolLabel(stack, "checkmark.seal.fill",
                 productName + " " + UpdateChecker::currentVersion() + " is the latest version.",
                 calloutGreen);
  addButtons(stack, {{"OK", [] { UpdateWindow::close(); }}});
}

void addFailed(QVBoxLayout& stack, UpdateChecker& checker) {
  addSymbolLabel(stack, "exclamationmark.triangle", "Update", titleBold);
  stack.addWidget(wrapped(checker.phase().message, callout));
  addButtons(stack,
             {{"Close", [] { UpdateWindow::close(); }},
              {readable("Open " + std::string(product::siteHost)), [&checker] { checker.openInBrowser(); }}});
}

}  // namespace

void fillUpdateContent(QVBoxLayout& stack, UpdateChecker& checker) {
  using Phase = UpdateChecker::Phase;
  switch (checker.phase().which) {
    case Phase::checking:
      return addProgress(stack, "Checking for updates…");
    case Phase::upToDate:
      return addUpToDate(stack);
    case Phase::failed:
      return addFailed(stack, checker);
    case Phase::offer:
    case Phase::downloading:
    case Phase::mounted:
      break;
  }
  if (!checker.release()) return;
  addRelease(stack, *checker.release());
  if (checker.phase() == Phase::offer) addOffer(stack, checker);
  if (checker.phase() == Phase::downloading) addProgress(stack, "Downloading…");
  if (checker.phase() == Phase::mounted) addMounted(stack);
}

}  // namespace velicor
