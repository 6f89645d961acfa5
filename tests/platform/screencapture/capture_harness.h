#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <QCoroTask>

#include "platform/screencapture/screen_capture.h"
#include "platform/screencapture/x11/service.h"
#include "platform/x11/own_clients.h"
#include "support/x_client.h"
#include "support/x_server.h"

namespace velicor::screencapture::test {

using velicor::test::magenta;
using velicor::test::Pattern;
using velicor::test::XClient;
using velicor::test::XServer;

// What a colour should be at a position of the root window; 0xRRGGBB.
using Picture = std::function<std::uint32_t(int x, int y)>;

// A copy of one complete frame.
struct Frame {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;  // 0xRRGGBB

  // Pixels that are not as they should be when the frame's corner is at `corner`.
  int wrongPixels(const Picture& picture, DevicePoint corner) const;
  int count(std::uint32_t colour) const;
  friend bool operator==(const Frame&, const Frame&) = default;
};

// Takes what a stream delivers. Its questions wait up to ten seconds for the answer.
class Receiver : public StreamOutput, public StreamDelegate {
 public:
  void didOutputSampleBuffer(Stream& stream, const SampleBuffer& sample, OutputType type) override;
  void didStopWithError(Stream& stream, const Error& error) override;

  // Frames are not only copied but held from now on; release() lets the oldest go.
  void hold();
  void release();

  std::vector<Frame> frames() const;

  // The newest complete frame; an empty one before the first.
  Frame last() const;

  // The frames since the last call, and no more of them here than the newest.
  std::vector<Frame> take();

  std::size_t complete() const { return frames().size(); }

  // Complete frames from `first` on, once there are `count` of them; fewer when they don't come.
  std::vector<Frame> framesFrom(std::size_t first, std::size_t count);

  // Whether a frame from `first` on was, or becomes, like this.
  bool waitForFrame(std::size_t first, const std::function<bool(const Frame&)>& wanted);
  std::optional<Error> waitForStop();

  // No complete frame for this long. Returns how many there are.
  std::size_t waitForQuiet(std::chrono::milliseconds duration = std::chrono::milliseconds(250));

 private:
  bool wait(std::unique_lock<std::mutex>& lock, const std::function<bool()>& condition);

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Frame> frames_;
  std::vector<PixelBufferRef> held_;
  bool holding_ = false;
  std::optional<Error> stop_;
};

// A server with a capture service on it, another program's connection, and one that counts as ours.
class Bench {
 public:
  explicit Bench(const std::string& screen = "1280x800x24", const std::vector<std::string>& more = {});

  std::shared_ptr<Stream> makeStream(const StreamConfiguration& configuration, bool excludingOurs = true);

  // Made and running.
  std::shared_ptr<Stream> start(const DeviceRect& rect, int rate = 30, bool excludingOurs = true);

  ContentFilter filter(bool excludingOurs);
  Display display();

  // A service that knows nothing of the past, and a stream of its that has shown a first frame, ours left out.
  struct Fresh {
    std::unique_ptr<Service> service;
    std::shared_ptr<Receiver> receiver;
    std::shared_ptr<Stream> stream;
  };
  Fresh startFresh(const DeviceRect& rect);

  // What such a one shows first.
  Frame freshFrame(const DeviceRect& rect);

  // Whether, once the change is made, a frame comes that shows the picture. It may be there before.
  bool shows(const Picture& picture, DevicePoint corner, const std::function<void()>& change);

  static StreamConfiguration configuration(const DeviceRect& rect, int rate = 30);

  template <typename T>
  static T await(QCoro::Task<T> task) {
    return QCoro::waitFor(std::move(task));
  }

  XServer server;
  x11::OwnClients own;
  std::unique_ptr<Service> service;
  XClient other;
  XClient ours;
  dispatch::SerialQueue queue{"velicor.capture"};
  std::shared_ptr<Receiver> receiver = std::make_shared<Receiver>();
};

// A window of ours over the place, in magenta.
xcb_window_t coverWithOurs(Bench& bench, const DeviceRect& place);

// A pattern in a window whose inner corner is there, on top of another picture.
Picture patternAt(const DeviceRect& window, Pattern pattern, Picture beneath);
Picture plain(std::uint32_t colour);

}  // namespace velicor::screencapture::test
