#include "diagnostics/debug_dump.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QPixmap>
#include <QTemporaryFile>
#include <QWidget>

#include "diagnostics/event_statistics.h"
#include "platform/log/log.h"

namespace velicor {

namespace {

EventStatistics& statistics() {
  // Never destroyed: its timer runs until the process ends.
  static auto* const instance = new EventStatistics(
      dispatch::systemClock(), [](const std::string& counts) { log::general("Velicor stats/s: " + counts); });
  return *instance;
}

std::optional<std::string> dumpPath(std::string_view name) {
  const char* prefix = std::getenv("VELICOR_DUMP");
  if (!prefix) return std::nullopt;
  return std::string(prefix) + "-" + std::string(name) + ".png";
}

// The texture's pixels, rows without gaps; empty where the device refuses or fails.
std::vector<std::byte> readBack(const std::shared_ptr<gpu::Texture>& texture, gpu::CommandQueue& queue) {
  const gpu::TextureDescriptor descriptor{texture->pixelFormat(), texture->width(), texture->height(),
                                          gpu::TextureUsage::shaderRead, gpu::StorageMode::shared};
  const auto staging = texture->device()->makeTexture(descriptor);
  const auto commands = staging ? queue.makeCommandBuffer() : nullptr;
  const auto blit = commands ? commands->makeBlitEncoder() : nullptr;
  if (!blit) return {};
  blit->copy({.source = texture,
              .sourceOrigin = {},
              .size = texture->size(),
              .destination = staging,
              .destinationOrigin = {}});
  blit->endEncoding();
  commands->commit();
  commands->waitUntilCompleted();
  if (commands->status() == gpu::CommandBuffer::Status::failed) return {};
  const std::size_t bytesPerRow = gpu::bytesPerPixel * static_cast<std::size_t>(texture->width());
  std::vector<std::byte> pixels(bytesPerRow * static_cast<std::size_t>(texture->height()));
  staging->getBytes(pixels, bytesPerRow, {{}, texture->size()});
  return pixels;
}

// Bytes R, G, B, X in this order.
void swapRedAndBlue(std::vector<std::byte>& pixels) {
  for (std::size_t i = 0; i < pixels.size(); i += gpu::bytesPerPixel)
    std::swap(pixels[i], pixels[i + 2]);
}

// For nobody else's eyes, and put in the place of whatever has the name: a link is not followed, nor a pipe
// waited for.
void replaceFile(const std::string& path, const QByteArray& content) {
  QTemporaryFile file(QFile::decodeName((path + ".XXXXXX").c_str()));
  if (!file.open() || file.write(content) != content.size() || !file.flush()) return;
  std::error_code error;
  std::filesystem::rename(QFile::encodeName(file.fileName()).toStdString(), path, error);
  if (!error) file.setAutoRemove(false);
}

// False where the picture can't be encoded. That the file can't be written doesn't count.
bool writePNG(const QImage& image, const std::string& path) {
  QByteArray png;
  QBuffer buffer(&png);
  if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) return false;
  replaceFile(path, png);
  return true;
}

}  // namespace

bool DebugDump::statsEnabled() {
  static const bool enabled = [] {
    const char* value = std::getenv("VELICOR_STATS");
    return value && std::string_view(value) == "1";
  }();
  return enabled;
}

void DebugDump::tick(std::string_view name) {
  if (statsEnabled()) statistics().tick(name);
}

void DebugDump::write(const std::shared_ptr<gpu::Texture>& texture,
                      const std::shared_ptr<gpu::CommandQueue>& queue, std::string_view name) {
  const auto path = dumpPath(name);
  if (!path) return;
  std::vector<std::byte> pixels = readBack(texture, *queue);
  if (pixels.empty()) return;
  if (texture->pixelFormat() == gpu::PixelFormat::bgra8Unorm) swapRedAndBlue(pixels);
  const QImage image(reinterpret_cast<const uchar*>(pixels.data()), texture->width(), texture->height(),
                     static_cast<qsizetype>(gpu::bytesPerPixel) * texture->width(), QImage::Format_RGBX8888);
  if (!writePNG(image, *path)) return;
  log::general("Velicor: dumped " + std::string(name) + " (" + std::to_string(texture->width()) + "x" +
               std::to_string(texture->height()) + ")");
}

void DebugDump::writeView(QWidget& view, std::string_view name) {
  const auto path = dumpPath(name);
  if (!path) return;
  const QPixmap picture = view.grab();
  if (picture.isNull() || !writePNG(picture.toImage(), *path)) return;
  log::general("Velicor: dumped view " + std::string(name));
}

}  // namespace velicor
