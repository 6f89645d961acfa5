#pragma once

#include <memory>
#include <optional>

#include <QWidget>

#include "platform/gpu/device.h"
#include "platform/notifications/notification_center.h"

class QImage;
class QPainter;

namespace velicor {

// A view of pictures that a device draws. It draws on demand only: when its notification is posted while it
// can be seen, when it is shown or resized, or when asked to; never on a timer. The device's finished picture,
// which goes when the view is hidden, is what every paint event shows, over whatever lies below, at the view's alpha; a repaint that nobody asked
// for costs no draw. While a draw is under way any number of demands lead to one more draw after it. Main
// thread.
class LiveTextureView : public QWidget {
 public:
  // Draws for a view.
  class Delegate {
   public:
    virtual ~Delegate() = default;

    // Main thread. Takes currentRenderTarget() and ends with present(), or does neither.
    virtual void draw(LiveTextureView& view) = 0;
  };

  LiveTextureView(std::shared_ptr<gpu::Device> device, notifications::Name signal, QWidget* parent = nullptr);
  ~LiveTextureView() override;

  // Held weakly; without one the view paints nothing.
  void setDelegate(std::weak_ptr<Delegate> delegate) { delegate_ = std::move(delegate); }

  // Opacity of what is painted, 0…1. The pictures themselves are opaque. What lies under a view that covers it
  // opaquely is neither drawn nor painted.
  double alphaValue() const { return alpha_; }
  void setAlphaValue(double alpha);

  // Continuous corners to which the picture is clipped, in points; 0, as at first, for none.
  void setCornerRadius(double radius);

  // Draws on the next turn of the event loop, unless the view is hidden before that.
  void setNeedsDisplay();

  // Draws now, whether or not the view can be seen; after the draw that is under way, if one is.
  void draw();

  // Whether a draw would be seen: not hidden, nor scrolled out of sight, in a shown window that is not covered by
  // other programs.
  bool canBeSeen() const;

  const std::shared_ptr<gpu::Device>& device() const { return device_; }

  // Of the picture, in device pixels.
  gpu::Extent drawableSize() const;

  // For the delegate: where to draw, cleared near black; none where no target is to be had now.
  std::optional<gpu::RenderTarget> currentRenderTarget();

  // For the delegate: shows what was drawn into that target once the command buffer has completed. Before the
  // commit.
  void present(gpu::CommandBuffer& commandBuffer);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

  // Which part of the view the picture is made for and painted on, in device pixels from the first that it
  // covers. All of it where no heir says otherwise.
  virtual QRect pictureRect() const;

  // The pictures' fourth byte means nothing, as in captured frames; at opacity 1 the view is painted opaque all the
  // same.
  void ignoreFourthByte() { fourthByteCounts_ = false; }

 private:
  void drawWhereSeen();
  void drawIfMissed();
  void finished(bool succeeded);
  QRectF place() const;
  void noteOpaqueness();
  void paintPicture(QPainter& painter, QImage image) const;
  void paintRounded(QPainter& painter, const QImage& image) const;
  void watchWindows();

  const std::shared_ptr<gpu::Device> device_;
  std::shared_ptr<gpu::Drawables> drawables_;
  std::weak_ptr<Delegate> delegate_;
  std::shared_ptr<gpu::Drawable> drawable_;  // of the draw that is being encoded
  double alpha_ = 1;
  double cornerRadius_ = 0;
  gpu::Extent drawnSize_;  // of the last draw, done or under way
  bool fourthByteCounts_ = true;
  bool scheduled_ = false;  // a draw waits for the next turn
  bool underWay_ = false;   // the device has not finished the last draw
  bool again_ = false;      // and another one was asked for since
  bool missed_ = false;     // a notification came while nobody could see the view
  Subscription observer_;
  Subscription windows_;
  const std::shared_ptr<LiveTextureView*> life_;  // for what may outlive the view
};

}  // namespace velicor
