#pragma once

#include <sys/types.h>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <QCoroTask>

#include "platform/base/error.h"
#include "platform/base/geometry.h"
#include "platform/base/pixel_buffer.h"
#include "platform/dispatch/serial_queue.h"

// The screen-capture service: what can be captured, and streams of a display's picture from which the windows
// of chosen processes are left out. x11/ carries it; all calls are made on the main thread unless said
// otherwise, and everything awaited continues there.
namespace velicor::screencapture {

// Errors of this service carry this domain.
inline constexpr std::string_view errorDomain = "velicor.screencapture";

enum ErrorCode : int {
  userDeclined = -3801,        // the server refuses us the right to read other programs' windows
  displayUnavailable = -3802,  // no such monitor, or it went away
  connectionLost = -3803,      // the X server is gone
  unsupportedScreen = -3804,   // a pixel layout that is not decoded
  serverRefused = -3805,       // a request that should have worked was refused; the description tells which
};

struct Display {
  std::uint32_t displayID = 0;  // the monitor's name atom
  friend bool operator==(const Display&, const Display&) = default;
};

// A process that owns top-level windows.
struct RunningApplication {
  pid_t processID = 0;
  std::string bundleIdentifier;  // product identifier where known (ours is), else empty
  friend bool operator==(const RunningApplication&, const RunningApplication&) = default;
};

// Whether queries leave out desktop-level windows, and whether they see mapped windows only.
struct ContentQuery {
  bool excludingDesktopWindows = false;
  bool onScreenWindowsOnly = false;
};

struct ShareableContent {
  std::vector<Display> displays;
  std::vector<RunningApplication> applications;
};

// A whole display without the windows of some processes.
struct ContentFilter {
  Display display;
  std::vector<RunningApplication> excludedApplications;
  friend bool operator==(const ContentFilter&, const ContentFilter&) = default;
};

enum class PixelFormat { bgra32 };
enum class ColorSpace { sRGB };

// A duration as a fraction of a second: value / timescale.
struct FrameInterval {
  std::int64_t value = 1;
  std::int32_t timescale = 60;
  friend bool operator==(const FrameInterval&, const FrameInterval&) = default;
};

struct StreamConfiguration {
  DisplayRect sourceRect;  // what is captured, in points of the display
  int width = 0;           // size of the frames in pixels
  int height = 0;
  double pixelsPerPoint =
      0;  // the display's scale; 0: width / sourceRect.width, which is off where it rounds
  PixelFormat pixelFormat = PixelFormat::bgra32;
  ColorSpace colorSpace = ColorSpace::sRGB;
  FrameInterval minimumFrameInterval;
  int queueDepth = 3;  // frames that may be in use at once
  bool showsCursor = false;
  friend bool operator==(const StreamConfiguration&, const StreamConfiguration&) = default;
};

enum class OutputType { screen, audio };
enum class FrameStatus { complete, idle, blank, started, suspended, stopped };

// Facts about one frame, as the stream attaches them.
struct SampleAttachment {
  std::optional<FrameStatus> status;
};

// The entry of a sample, or none. In the sample itself: samples are made many times a second.
class SampleAttachments {
 public:
  SampleAttachments() = default;
  SampleAttachments(std::initializer_list<SampleAttachment> entries) {
    if (entries.size() > 0) entry_ = *entries.begin();
  }

  bool empty() const { return !entry_; }

  // Not of empty ones.
  const SampleAttachment& front() const { return *entry_; }

 private:
  std::optional<SampleAttachment> entry_;
};

// What a stream delivers at one tick.
struct SampleBuffer {
  bool isValid = true;
  SampleAttachments attachments;
  PixelBufferRef imageBuffer;  // none unless the status is complete
};

class Stream;

// Receives the frames of a stream, on the queue given with it.
class StreamOutput {
 public:
  virtual ~StreamOutput() = default;
  virtual void didOutputSampleBuffer(Stream& stream, const SampleBuffer& sample, OutputType type) = 0;
};

// Hears that a stream ended by itself. Any thread.
class StreamDelegate {
 public:
  virtual ~StreamDelegate() = default;
  virtual void didStopWithError(Stream& stream, const Error& error) = 0;
};

// One running capture. Starts at the first configuration given, delivers a complete frame first, then one
// whenever something inside its rectangle changed (never faster than the interval, and twice more when the
// changes end), and nothing in between. Dropping the last reference ends it.
class Stream {
 public:
  virtual ~Stream() = default;

  // Before startCapture. Frames go to `output` on `queue`; both must outlive the stream's last delivery:
  // the output is held weakly, the queue by reference until stopCapture has finished.
  virtual Status addStreamOutput(std::weak_ptr<StreamOutput> output, OutputType type,
                                 dispatch::SerialQueue& queue) = 0;

  virtual QCoro::Task<Status> startCapture() = 0;

  // After it has finished nothing more is delivered.
  virtual QCoro::Task<Status> stopCapture() = 0;
  virtual QCoro::Task<Status> updateConfiguration(StreamConfiguration configuration) = 0;
  virtual QCoro::Task<Status> updateContentFilter(ContentFilter filter) = 0;
};

class Service {
 public:
  virtual ~Service() = default;

  virtual QCoro::Task<Result<ShareableContent>> shareableContent(ContentQuery query) = 0;

  virtual std::shared_ptr<Stream> makeStream(ContentFilter filter, StreamConfiguration configuration,
                                             std::weak_ptr<StreamDelegate> delegate) = 0;

  // Whether the system lets this process read the screen; asks nobody.
  virtual bool preflightAccess() = 0;

  // Asks for that right where the platform has a way to; else does nothing. The answer as preflightAccess.
  virtual bool requestAccess() = 0;
};

}  // namespace velicor::screencapture
