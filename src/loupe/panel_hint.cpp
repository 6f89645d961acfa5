#include "loupe/panel_hint.h"

#include <chrono>
#include <utility>

#include <QPainter>
#include <QPixmap>
#include <QRegion>

#include "loupe/panel_hint_bubble.h"
#include "platform/desktop/compositor.h"
#include "platform/desktop/desktop.h"
#include "platform/dispatch/main_queue.h"

namespace velicor {

namespace {

using namespace std::chrono_literals;

constexpr int hintLevel = 5;  // above the loupe and the scopes panel
constexpr auto fadeInTime = 150ms;
constexpr auto fadeOutTime = 300ms;

constexpr int shadowReach = 10;
constexpr double shadowDrop = 2;
constexpr double shadowDarkness = 0.35;  // where it is darkest

// Wider and wider strokes, each a little darkness more.
void drawShadow(QPainter& painter, const QPainterPath& outline) {
  painter.translate(0, shadowDrop);
  const int steps = shadowReach - static_cast<int>(shadowDrop);
  for (int step = steps; step > 0; --step) {
    const QColor share(0, 0, 0, static_cast<int>(255 * shadowDarkness / steps * (steps - step + 1) / steps));
    painter.strokePath(outline, QPen(share, 2 * step, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  }
  painter.translate(0, -shadowDrop);
}

DesktopRect bubbleFrame(const QSize& size, const DesktopRect& chip,
                        const std::optional<DesktopRect>& visibleFrame) {
  const DesktopSize points{double(size.width()), double(size.height())};
  const DesktopPoint corner = PanelHintBubble::place(chip, points, visibleFrame);
  return {corner.x, corner.y, points.width, points.height};
}

}  // namespace

// The window's content: one picture of bubble and shadow, as opaque as the moment wants it.
class PanelHint::Canvas : public QWidget {
 public:
  Canvas() { bubble_.resize(bubble_.sizeHint()); }

  QSize bubbleSize() const { return bubble_.size(); }
  QPainterPath outline() const { return bubble_.outline().translated(shadowReach, shadowReach); }

  double alpha = 0;
  bool hasAlpha = true;  // the screen, not the picture

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    if (!hasAlpha) return drawBubble(painter);
    if (picture_.isNull() || picture_.devicePixelRatio() != devicePixelRatioF()) drawPicture();
    painter.setOpacity(alpha);
    painter.drawPixmap(0, 0, picture_);
  }

 private:
  void drawPicture() {
    const double scale = devicePixelRatioF();
    picture_ = QPixmap((QSizeF(size()) * scale).toSize());
    picture_.setDevicePixelRatio(scale);
    picture_.fill(Qt::transparent);
    QPainter painter(&picture_);
    painter.setRenderHint(QPainter::Antialiasing);
    drawShadow(painter, outline());
    drawBubble(painter);
  }

  void drawBubble(QPainter& painter) {
    bubble_.render(&painter, QPoint(shadowReach, shadowReach), QRegion(), QWidget::RenderFlags());
  }

  PanelHintBubble bubble_;
  QPixmap picture_;
};

PanelHint::PanelHint(desktop::Desktop& desktop, const DesktopRect& chip,
                     const std::optional<DesktopRect>& visibleFrame)
    : desktop_(desktop), alpha_(0, [this] { alphaChanged(); }) {
  auto canvas = std::make_unique<Canvas>();
  canvas_ = canvas.get();
  frame_ = bubbleFrame(canvas->bubbleSize(), chip, visibleFrame);
  panel_ = std::make_unique<desktop::Panel>(desktop, desktop::PanelKind::bypassing,
                                            frame_.insetBy(-shadowReach, -shadowReach));
  panel_->setLevel(hintLevel);
  panel_->setIgnoresMouseEvents(true);
  panel_->setContentView(std::move(canvas));
  compositorChanged_ = desktop_.compositor().changed.subscribe([this] { applyShape(); });
  applyShape();
  panel_->orderFront();
  alpha_.moveTo(1, fadeInTime);
}

PanelHint::~PanelHint() { panel_->orderOut(); }

// The shape's edge is whole pixels, and everything inside it is opaque.
void PanelHint::applyShape() {
  canvas_->hasAlpha = desktop_.compositor().isPresent();
  if (canvas_->hasAlpha) {
    panel_->window().clearMask();
  } else {
    panel_->window().setMask(QRegion(canvas_->outline().toFillPolygon().toPolygon(), Qt::WindingFill));
  }
  canvas_->update();
}

void PanelHint::alphaChanged() {
  canvas_->alpha = alpha_.value();
  canvas_->update();
  if (!faded_ || alpha_.value() != alpha_.target()) return;
  panel_->orderOut();
  dispatch::MainQueue::shared().async(std::exchange(faded_, nullptr));
}

void PanelHint::fadeOut(std::function<void()> then) {
  faded_ = std::move(then);
  alpha_.moveTo(0, fadeOutTime);
}

}  // namespace velicor
