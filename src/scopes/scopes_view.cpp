#include "scopes/scopes_view.h"

#include <utility>

#include <QBoxLayout>
#include <QGridLayout>
#include <QKeyEvent>

#include "analysis/notification_names.h"
#include "analysis/views/metal_texture_view.h"
#include "controls/hairline.h"
#include "controls/label.h"
#include "controls/layout.h"
#include "controls/mini_slider.h"
#include "controls/plain_button.h"
#include "controls/segmented_picker.h"
#include "controls/switch.h"
#include "controls/symbol_image.h"
#include "menubar/hot_key.h"
#include "palette/legend_view.h"
#include "palette/palette_editor.h"
#include "platform/base/geometry.h"
#include "platform/dispatch/main_queue.h"
#include "scopes/error_block.h"
#include "scopes/more_below.h"
#include "scopes/parade_graticule.h"
#include "scopes/scope_view.h"
#include "scopes/scope_words.h"
#include "scopes/scopes_geometry.h"
#include "scopes/vectorscope_graticule.h"

namespace velicor {

namespace {

using controls::Face;
using controls::Label;
using controls::SymbolImage;
using controls::TextColor;
using controls::TextStyle;

constexpr QMargins padding(16, 22, 16, 12);
constexpr TextStyle smallText{.size = 11, .color = TextColor::secondary};
constexpr TextStyle smallDigits{.size = 11, .color = TextColor::secondary, .face = Face::tabular};

SymbolImage* smallSymbol(std::string_view name) {
  return new SymbolImage(name, smallText.size, smallText.color);
}

QString percentageText(double opacity) {
  return QString::number(static_cast<int>(opacity * 100)) + QLatin1Char('%');
}

QString shortcutText() {
  const HotKey& key = HotKey::shared();
  return QString::fromStdString(HotKey::displayString(key.keyCode(), key.modifiers())) +
         QStringLiteral("  hide to menu bar");
}

}  // namespace

ScopesView::ScopesView(AppState& state, CaptureManager& capture, double scopeWidth, double legendHeight,
                       desktop::Desktop& desktop)
    : state_(state),
      capture_(capture),
      desktop_(desktop),
      scopeWidth_(roundHalfAway(scopeWidth)),
      legendHeight_(roundHalfAway(legendHeight)) {
  setAccessibleName(QStringLiteral("Scopes"));
  auto* column = controls::plainLayout<QVBoxLayout>(this);
  column->setContentsMargins(padding);
  column->addWidget(header());
  column->addWidget(modeTabs());
  column->addWidget(hairline());
  column->addWidget(controls());
  column->addWidget(hairline());
  column->addWidget(scrollArea(), 1);
  observe();
  refresh();
}

ScopesView::~ScopesView() = default;

QWidget* ScopesView::header() {
  auto* title =
      new Label(QStringLiteral("VELICOR"), {.size = 15, .weight = QFont::DemiBold, .letterSpacing = 2.4});
  title->setAlignment(Qt::AlignHCenter);
  auto* hide = new controls::PlainButton(
      new SymbolImage("eye.slash", 11, TextColor::secondary, desktop::SymbolWeight::bold));
  hide->setFixedSize(20, 20);
  hide->setAccessibleName(QStringLiteral("Hide the scopes panel"));
  hide->setToolTip(QStringLiteral("Hide this panel — the loupe's sidebar button shows it again."));
  hide->onClick = [this] {
    if (state_.togglePanel) state_.togglePanel();
  };
  auto* result = new QWidget;
  auto* layers = controls::plainLayout<QGridLayout>(result);
  auto* titleBox = controls::plainLayout<QVBoxLayout>(nullptr);
  titleBox->setContentsMargins(0, 6, 0, 16);
  titleBox->addWidget(title);
  auto* hideBox = controls::plainLayout<QVBoxLayout>(nullptr);
  hideBox->setContentsMargins(0, 2, 0, 0);
  hideBox->addWidget(hide);
  layers->addLayout(titleBox, 0, 0);
  layers->addLayout(hideBox, 0, 0, Qt::AlignTop | Qt::AlignRight);
  return result;
}

QWidget* ScopesView::modeTabs() {
  tabs_ = new ModeTabs(state_.mode());
  tabs_->onSelect = [this](MetalProcessor::Mode mode) { state_.setMode(mode); };
  return tabs_;
}

QWidget* ScopesView::hairline() { return new controls::Hairline; }

QWidget* ScopesView::controls() {
  auto* result = new QWidget;
  auto* column = controls::plainLayout<QVBoxLayout>(result, 10);
  column->setContentsMargins(0, 12, 0, 12);
  column->addWidget(regionRow());
  column->addWidget(opacityRow());
  column->addWidget(rateRow());
  return result;
}

QWidget* ScopesView::regionRow() {
  region_ = new Label({}, smallDigits);
  lock_ = new controls::Switch(QStringLiteral("Lock"));
  lock_->setToolTip(QStringLiteral("The loupe stops taking the mouse — clicks go to the app below."));
  lock_->onChange = [this](bool on) { state_.setLocked(on); };
  auto* label = controls::plainLayout<QHBoxLayout>(nullptr, 6);
  label->addWidget(smallSymbol("viewfinder"));
  label->addWidget(region_);
  auto* result = new QWidget;
  auto* row = controls::plainLayout<QHBoxLayout>(result, 12);
  row->addLayout(label);
  row->addStretch();
  row->addWidget(lock_);
  return result;
}

QWidget* ScopesView::opacityRow() {
  opacity_ = new controls::MiniSlider;
  opacity_->setAccessibleName(QStringLiteral("Overlay opacity"));
  opacity_->wording = percentageText;
  opacity_->onChange = [this](double value) { state_.setOpacity(value); };
  percentage_ = new Label({}, smallDigits);
  percentage_->setFixedWidth(34);
  percentage_->setAlignment(Qt::AlignRight);
  auto* result = new QWidget;
  auto* row = controls::plainLayout<QHBoxLayout>(result, 10);
  row->addWidget(smallSymbol("circle.lefthalf.filled"));
  row->addWidget(opacity_, 1);
  row->addWidget(percentage_);
  return result;
}

QWidget* ScopesView::rateRow() {
  rate_ = new controls::SegmentedPicker(
      {{QStringLiteral("10"), 10}, {QStringLiteral("15"), 15}, {QStringLiteral("30"), 30}});
  rate_->setAccessibleName(QStringLiteral("Frames per second"));
  rate_->onChange = [this](int fps) { state_.setFps(fps); };
  auto* result = new QWidget;
  auto* row = controls::plainLayout<QHBoxLayout>(result, 10);
  row->addWidget(smallSymbol("gauge.with.dots.needle.33percent"));
  row->addWidget(rate_, 1);
  row->addWidget(new Label(QStringLiteral("fps"), smallText));
  return result;
}

QWidget* ScopesView::scrollArea() {
  scrolled_ = new ScrollColumn;
  QVBoxLayout& column = scrolled_->column();
  column.addWidget(scopes());
  column.addWidget(hairline());
  column.addWidget(paletteEditor());
  column.addWidget(hairlineBelowEditor_ = hairline());
  column.addWidget(legend());
  column.addStretch(1);
  moreBelow_ = new MoreBelow(this);
  scrolled_->onMoreBelow = [this](bool isMore) { moreBelow_->setVisible(isMore); };
  return scrolled_;
}

QWidget* ScopesView::scopes() {
  auto* result = new QWidget;
  auto* column = controls::plainLayout<QVBoxLayout>(result, static_cast<int>(scopes_geometry::scopeGap));
  column->setContentsMargins(0, 14, 0, 14);
  ScopeView* vectorscope = scope(QStringLiteral("Vectorscope"), scopes_geometry::vectorscopeAspect,
                                 &MetalProcessor::vectorscope, new VectorscopeGraticule);
  ScopeView* parade = scope(QStringLiteral("RGB parade"), scopes_geometry::paradeAspect, &MetalProcessor::parade,
                            new ParadeGraticule);
  for (ScopeView* view : {vectorscope, parade}) column->addWidget(view, 0, Qt::AlignHCenter);
  narrator_ = std::make_unique<ScopeNarrator>(state_.processor, *vectorscope, *parade);
  return result;
}

ScopeView* ScopesView::scope(const QString& name, double aspect,
                             std::function<std::shared_ptr<gpu::Texture>(const MetalProcessor&)> picture,
                             Graticule* graticule) {
  std::unique_ptr<LiveTextureView> live;
  if (const std::shared_ptr<MetalProcessor> processor = state_.processor) {
    const MetalTextureView view{processor->device(), velicorScopesReady,
                                [processor, picture = std::move(picture)] { return picture(*processor); }};
    live = view.makeView(view.makeCoordinator());
    live->setCornerRadius(ScopeView::cornerRadius);
  }
  auto* result = new ScopeView(aspect, scopeWidth_, live.release(), graticule);
  result->setAccessibleName(name);
  return result;
}

QWidget* ScopesView::paletteEditor() {
  editor_ = new PaletteEditor(desktop_, state_.palette(), state_.mode());
  editor_->onChange = [this](const Palette& palette) { state_.setPalette(palette); };
  return editor_;
}

QWidget* ScopesView::legend() {
  legendView_ = new LegendView(state_.mode(), state_.palette());
  legendView_->setFixedHeight(legendHeight_);
  shortcut_ = new Label({}, {.size = 10, .color = TextColor::tertiary});
  shortcut_->setAlignment(Qt::AlignHCenter);
  error_ = new ErrorBlock;
  auto* result = new QWidget;
  auto* column = controls::plainLayout<QVBoxLayout>(result, 6);
  column->setContentsMargins(0, 12, 0, 0);
  column->addWidget(legendView_);
  column->addWidget(shortcut_);
  column->addWidget(error_);
  return result;
}

void ScopesView::observe() {
  const auto soon = [this] { refreshSoon(); };
  subscriptions_.push_back(state_.willChange.subscribe(soon));
  subscriptions_.push_back(capture_.willChange.subscribe(soon));
  subscriptions_.push_back(HotKey::shared().displayChanged.subscribe(soon));
}

// The signals come before the change, and several for one act of the user.
void ScopesView::refreshSoon() {
  if (pending_) return;
  pending_ = std::make_shared<bool>(true);
  dispatch::MainQueue::shared().async([this, waiting = std::weak_ptr(pending_)] {
    if (waiting.lock()) refresh();
  });
}

void ScopesView::refresh() {
  pending_.reset();
  tabs_->setMode(state_.mode());
  region_->setText(QString::fromStdString(state_.regionText()));
  lock_->setOn(state_.locked());
  opacity_->setValue(state_.opacity());
  percentage_->setText(percentageText(state_.opacity()));
  rate_->setValue(state_.fps());
  editor_->setPalette(state_.palette());
  editor_->setMode(state_.mode());
  hairlineBelowEditor_->setVisible(state_.mode() != MetalProcessor::Mode::original);
  legendView_->setMode(state_.mode());
  legendView_->setPalette(state_.palette());
  shortcut_->setText(shortcutText());
  const bool failure = capture_.lastError() && error_->isHidden();
  error_->setError(capture_.lastError());
  if (failure) scrolled_->bringIntoSight(*error_);
}

// In the padding, so that it lies over nothing.
void ScopesView::resizeEvent(QResizeEvent*) {
  const QRect inner = rect().marginsRemoved(padding);
  moreBelow_->setGeometry(inner.left(), inner.bottom() + 1, inner.width(), padding.bottom());
}

void ScopesView::keyPressEvent(QKeyEvent* event) {
  if (!scrolled_->scrollBy(event->key())) QWidget::keyPressEvent(event);
}

}  // namespace velicor
