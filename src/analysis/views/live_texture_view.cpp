#include "analysis/views/live_texture_view.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/panel.h"
#include "platform/desktop/pixel_place.h"
#include "platform/desktop/window_stack.h"
#include "platform/dispatch/main_queue.h"

namespace velicor {

namespace {

constexpr gpu::ClearColor nearBlack{0.02, 0.02, 0.02, 1.0};

// A view on the picture's memory, not a copy.
QImage imageOf(const gpu::Picture& picture) {
  return {reinterpret_cast<const uchar*>(picture.bytes()), picture.width(), picture.height(),
          static_cast<qsizetype>(picture.bytesPerRow()), QImage::Format_RGB32};
}

// The toolkit copies opaque pictures with their fourth byte, which in a captured frame means nothing.
void makeOpaque(QPainter& painter, const QRectF& rect) {
  painter.setCompositionMode(QPainter::CompositionMode_Plus);
  painter.fillRect(rect, Qt::black);
}

}  // namespace

LiveTextureView::LiveTextureView(std::shared_ptr<gpu::Device> device, notifications::Name signal,
                                 QWidget* parent)
    : QWidget(parent),
      device_(std::move(device)),
      drawables_(device_->makeDrawables()),
      life_(std::make_shared<LiveTextureView*>(this)) {
  observer_ =
      notifications::NotificationCenter::defaultCenter().addObserver(signal, [view = std::weak_ptr(life_)] {
        if (const auto alive = view.lock()) (*alive)->drawWhereSeen();
      });
}

LiveTextureView::~LiveTextureView() = default;

bool LiveTextureView::canBeSeen() const {
  if (!isVisible() || window()->isMinimized() || visibleRegion().isEmpty()) return false;
  const desktop::Panel* panel = desktop::Panel::of(this);
  return !panel || !panel->isOccluded();
}

// Later, where nobody would see it now.
void LiveTextureView::drawWhereSeen() {
  missed_ = !canBeSeen();
  if (!missed_) setNeedsDisplay();
}

// A still screen sends no further notification: what was missed is drawn when the view comes to light.
void LiveTextureView::drawIfMissed() {
  if (missed_ && canBeSeen()) setNeedsDisplay();
}

void LiveTextureView::setNeedsDisplay() {
  if (std::exchange(scheduled_, true)) return;
  dispatch::MainQueue::shared().async([view = std::weak_ptr(life_)] {
    const auto alive = view.lock();
    if (!alive || !std::exchange((*alive)->scheduled_, false)) return;
    (*alive)->draw();
  });
}

void LiveTextureView::draw() {
  scheduled_ = false;
  if (underWay_) {
    again_ = true;
    return;
  }
  missed_ = false;
  drawnSize_ = drawableSize();
  if (const auto delegate = delegate_.lock()) delegate->draw(*this);
  drawable_.reset();
}

QRect LiveTextureView::pictureRect() const {
  const DeviceRect pixels = desktop::pixelPlaceOf(*this).inWindow;
  return {0, 0, pixels.width, pixels.height};
}

gpu::Extent LiveTextureView::drawableSize() const {
  const QRect place = pictureRect();
  return {place.width(), place.height()};
}

std::optional<gpu::RenderTarget> LiveTextureView::currentRenderTarget() {
  const gpu::Extent size = drawableSize();
  if (size.width <= 0 || size.height <= 0) return std::nullopt;
  if (!drawable_) drawable_ = drawables_->next(size.width, size.height);
  if (!drawable_) return std::nullopt;
  return gpu::RenderTarget{drawable_->texture(), nearBlack};
}

void LiveTextureView::present(gpu::CommandBuffer& commandBuffer) {
  if (!drawable_) return;
  underWay_ = true;
  commandBuffer.present(std::exchange(drawable_, nullptr));
  commandBuffer.addCompletedHandler([view = std::weak_ptr(life_)](const gpu::CommandBuffer& done) {
    const bool succeeded = done.status() != gpu::CommandBuffer::Status::failed;
    // Only the main thread may hold the view: it could otherwise be left on this one.
    dispatch::MainQueue::shared().async([view, succeeded] {
      if (const auto alive = view.lock()) (*alive)->finished(succeeded);
    });
  });
}

void LiveTextureView::finished(bool succeeded) {
  underWay_ = false;
  noteOpaqueness();
  if (succeeded) update();
  if (std::exchange(again_, false)) draw();
}

void LiveTextureView::setAlphaValue(double alpha) {
  alpha_ = alpha;
  noteOpaqueness();
  update();
}

void LiveTextureView::setCornerRadius(double radius) {
  cornerRadius_ = radius;
  noteOpaqueness();
  update();
}

// In points.
QRectF LiveTextureView::place() const {
  const QRect pixels = pictureRect();
  const double scale = devicePixelRatioF();
  return {desktop::pixelPlaceOf(*this).inWidget.topLeft() + QPointF(pixels.topLeft()) / scale,
          QSizeF(pixels.size()) / scale};
}

// The toolkit then leaves out what lies below.
void LiveTextureView::noteOpaqueness() {
  const bool covers =
      alpha_ == 1 && cornerRadius_ == 0 && drawables_->front() && place().contains(QRectF(rect()));
  setAttribute(Qt::WA_OpaquePaintEvent, covers);
}

// Coming to light by being scrolled is told by nothing but the paint event.
void LiveTextureView::paintEvent(QPaintEvent*) {
  drawIfMissed();
  // Scrolled to another place, it may cover a row of pixels more or less.
  if (drawnSize_ != drawableSize()) drawWhereSeen();
  const std::shared_ptr<const gpu::Picture> picture = drawables_->front();
  if (!picture) return;
  QPainter painter(this);
  painter.setOpacity(alpha_);
  if (cornerRadius_ > 0) {
    paintRounded(painter, imageOf(*picture));
  } else {
    paintPicture(painter, imageOf(*picture));
  }
}

void LiveTextureView::paintPicture(QPainter& painter, QImage image) const {
  if (image.size() == pictureRect().size()) {
    image.setDevicePixelRatio(devicePixelRatioF());
    painter.drawImage(place().topLeft(), image);
  } else {
    painter.drawImage(place(), image);  // until the draw in the new size is there
  }
  if (alpha_ == 1 && !fourthByteCounts_) makeOpaque(painter, place());
}

// A clip with soft edges makes painting many times slower, so only what has corners is painted with one. The
// parts meet between two device pixels.
void LiveTextureView::paintRounded(QPainter& painter, const QImage& image) const {
  const double scale = devicePixelRatioF();
  const QRectF whole = place();
  const double corners =
      std::min(std::ceil(2 * cornerRadius_ * scale), std::floor(pictureRect().height() / 2.0)) / scale;
  const QRectF middle = whole.adjusted(0, corners, 0, -corners);
  painter.setClipRect(middle);
  paintPicture(painter, image);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPainterPath outline = desktop::continuousCorners(whole, cornerRadius_);
  for (const QRectF& end :
       {QRectF(whole.topLeft(), middle.topRight()), QRectF(middle.bottomLeft(), whole.bottomRight())}) {
    painter.setClipPath(outline);
    painter.setClipRect(end, Qt::IntersectClip);
    paintPicture(painter, image);
  }
}

void LiveTextureView::resizeEvent(QResizeEvent*) {
  noteOpaqueness();
  drawWhereSeen();
}

void LiveTextureView::showEvent(QShowEvent*) {
  watchWindows();
  setNeedsDisplay();
}

// Nothing of the screen stays in memory that nobody sees; what was still to be drawn is when the view is
// shown.
void LiveTextureView::hideEvent(QHideEvent*) {
  scheduled_ = false;
  again_ = false;
  drawable_.reset();
  drawables_ = device_->makeDrawables();
  noteOpaqueness();
}

void LiveTextureView::watchWindows() {
  const desktop::Panel* panel = desktop::Panel::of(this);
  if (!panel || windows_.isActive()) return;
  windows_ = panel->desktop().windows().changed.subscribe([this] { drawIfMissed(); });
}

}  // namespace velicor
