#include "capture_harness.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <unistd.h>

#include <gtest/gtest.h>

namespace velicor::screencapture::test {

namespace {

constexpr auto patience = std::chrono::seconds(10);
constexpr std::uint32_t colourBits = 0xffffff;

Frame copyOf(const PixelBuffer& buffer) {
  const auto width = static_cast<std::size_t>(buffer.width());
  Frame frame{buffer.width(), buffer.height(), {}};
  frame.pixels.resize(width * static_cast<std::size_t>(buffer.height()));
  std::uint32_t* pixels = frame.pixels.data();
  for (int y = 0; y < buffer.height(); ++y, pixels += width) {
    std::memcpy(pixels, buffer.row(y).data(), width * 4);
    for (std::size_t x = 0; x < width; ++x)
      pixels[x] &= colourBits;
  }
  return frame;
}

}  // namespace

int Frame::wrongPixels(const Picture& picture, DevicePoint corner) const {
  int wrong = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const std::uint32_t pixel = pixels[static_cast<std::size_t>(y * width + x)];
      if (pixel != picture(corner.x + x, corner.y + y)) ++wrong;
    }
  }
  return wrong;
}

int Frame::count(std::uint32_t colour) const {
  return static_cast<int>(std::count(pixels.begin(), pixels.end(), colour));
}

void Receiver::didOutputSampleBuffer(Stream&, const SampleBuffer& sample, OutputType) {
  Frame frame = copyOf(*sample.imageBuffer);
  const std::scoped_lock guard(mutex_);
  frames_.push_back(std::move(frame));
  if (holding_) held_.push_back(sample.imageBuffer);
  changed_.notify_all();
}

void Receiver::didStopWithError(Stream&, const Error& error) {
  const std::scoped_lock guard(mutex_);
  stop_ = error;
  changed_.notify_all();
}

void Receiver::hold() {
  const std::scoped_lock guard(mutex_);
  holding_ = true;
}

void Receiver::release() {
  PixelBufferRef oldest;
  const std::scoped_lock guard(mutex_);
  if (held_.empty()) return;
  oldest = std::move(held_.front());
  held_.erase(held_.begin());
}

std::vector<Frame> Receiver::frames() const {
  const std::scoped_lock guard(mutex_);
  return frames_;
}

Frame Receiver::last() const {
  const std::scoped_lock guard(mutex_);
  return frames_.empty() ? Frame{} : frames_.back();
}

std::vector<Frame> Receiver::take() {
  const std::scoped_lock guard(mutex_);
  if (frames_.empty()) return {};
  const Frame newest = frames_.back();
  return std::exchange(frames_, {newest});
}

bool Receiver::wait(std::unique_lock<std::mutex>& lock, const std::function<bool()>& condition) {
  return changed_.wait_for(lock, patience, condition);
}

std::vector<Frame> Receiver::framesFrom(std::size_t first, std::size_t count) {
  std::unique_lock lock(mutex_);
  wait(lock, [&] { return frames_.size() >= first + count; });
  if (frames_.size() <= first) return {};
  return {frames_.begin() + static_cast<std::ptrdiff_t>(first), frames_.end()};
}

bool Receiver::waitForFrame(std::size_t first, const std::function<bool(const Frame&)>& wanted) {
  std::unique_lock lock(mutex_);
  std::size_t next = first;
  return wait(lock, [&] {
    for (; next < frames_.size(); ++next) {
      if (wanted(frames_[next])) return true;
    }
    return false;
  });
}

std::optional<Error> Receiver::waitForStop() {
  std::unique_lock lock(mutex_);
  wait(lock, [&] { return stop_.has_value(); });
  return stop_;
}

std::size_t Receiver::waitForQuiet(std::chrono::milliseconds duration) {
  std::unique_lock lock(mutex_);
  std::size_t seen = frames_.size();
  while (changed_.wait_for(lock, duration, [&] { return frames_.size() != seen; }))
    seen = frames_.size();
  return seen;
}

Bench::Bench(const std::string& screen, const std::vector<std::string>& more)
    : server(screen, more), other(server.name()), ours(server.name()) {
  auto made = makeX11Service(server.name(), own);
  if (!made) throw std::runtime_error(made.error().description);
  service = std::move(*made);
  ours.joinOwn(own);
}

Display Bench::display() {
  const auto content = await(service->shareableContent({}));
  EXPECT_TRUE(content) << content.error().description;
  return content ? content->displays.at(0) : Display{};
}

ContentFilter Bench::filter(bool excludingOurs) {
  ContentFilter result{display(), {}};
  if (excludingOurs) result.excludedApplications.push_back({getpid(), {}});
  return result;
}

StreamConfiguration Bench::configuration(const DeviceRect& rect, int rate) {
  StreamConfiguration result;
  result.sourceRect = {static_cast<double>(rect.x), static_cast<double>(rect.y),
                       static_cast<double>(rect.width), static_cast<double>(rect.height)};
  result.width = rect.width;
  result.height = rect.height;
  result.minimumFrameInterval = {1, rate};
  return result;
}

std::shared_ptr<Stream> Bench::makeStream(const StreamConfiguration& wanted, bool excludingOurs) {
  auto stream = service->makeStream(filter(excludingOurs), wanted, receiver);
  EXPECT_TRUE(stream->addStreamOutput(receiver, OutputType::screen, queue));
  return stream;
}

std::shared_ptr<Stream> Bench::start(const DeviceRect& rect, int rate, bool excludingOurs) {
  auto stream = makeStream(configuration(rect, rate), excludingOurs);
  const Status started = await(stream->startCapture());
  EXPECT_TRUE(started) << started.error().description;
  return stream;
}

Bench::Fresh Bench::startFresh(const DeviceRect& rect) {
  auto made = makeX11Service(server.name(), own);
  if (!made) throw std::runtime_error(made.error().description);
  const auto taker = std::make_shared<Receiver>();
  auto stream = (*made)->makeStream(filter(true), configuration(rect, 60), taker);
  EXPECT_TRUE(stream->addStreamOutput(taker, OutputType::screen, queue));
  EXPECT_TRUE(await(stream->startCapture()));
  taker->framesFrom(0, 1);
  return {std::move(*made), taker, std::move(stream)};
}

Frame Bench::freshFrame(const DeviceRect& rect) {
  const Fresh fresh = startFresh(rect);
  const auto frames = fresh.receiver->framesFrom(0, 1);
  EXPECT_TRUE(await(fresh.stream->stopCapture()));
  return frames.empty() ? Frame{} : frames.front();
}

bool Bench::shows(const Picture& picture, DevicePoint corner, const std::function<void()>& change) {
  const std::size_t before = receiver->waitForQuiet(std::chrono::milliseconds(120));
  change();
  return receiver->waitForFrame(before - std::min<std::size_t>(before, 1),
                                [&](const Frame& frame) { return frame.wrongPixels(picture, corner) == 0; });
}

xcb_window_t coverWithOurs(Bench& bench, const DeviceRect& place) {
  return bench.ours.showColour(place, magenta);
}

Picture patternAt(const DeviceRect& window, Pattern pattern, Picture beneath) {
  return [=](int x, int y) {
    return window.contains(DevicePoint{x, y}) ? pattern.at(x - window.x, y - window.y) : beneath(x, y);
  };
}

Picture plain(std::uint32_t colour) {
  return [colour](int, int) { return colour; };
}

}  // namespace velicor::screencapture::test
