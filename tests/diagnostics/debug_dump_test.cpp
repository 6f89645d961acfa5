#include "diagnostics/debug_dump.h"

#include <array>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QColor>
#include <QImage>
#include <QTemporaryDir>
#include <QWidget>

#include "platform/gpu/native/native_device.h"
#include "support/log_recorder.h"

namespace velicor {
namespace {

constexpr std::array orange{std::byte{255}, std::byte{128}, std::byte{0}, std::byte{7}};

class DebugDumpTest : public testing::Test {
 protected:
  ~DebugDumpTest() override { qunsetenv("VELICOR_DUMP"); }

  void dumpTo(const QString& prefix) { qputenv("VELICOR_DUMP", prefix.toUtf8()); }

  // Two by one pixels with the bytes of `orange` as the first.
  std::shared_ptr<gpu::Texture> texture(gpu::PixelFormat format) {
    auto made = device_->makeTexture({format, 2, 1, gpu::TextureUsage::shaderRead, gpu::StorageMode::shared});
    made->replace({{0, 0}, {1, 1}}, orange, 4);
    made->replace({{1, 0}, {1, 1}}, std::array<std::byte, 4>{}, 4);
    return made;
  }

  QTemporaryDir folder_;
  std::shared_ptr<gpu::Device> device_ = gpu::makeNativeDevice();
  std::shared_ptr<gpu::CommandQueue> queue_ = device_->makeCommandQueue();
};

TEST_F(DebugDumpTest, WritesTexturesInTheirOwnColours) {
  dumpTo(folder_.filePath("vc"));
  const test::LogRecorder log;
  DebugDump::write(texture(gpu::PixelFormat::rgba8Unorm), queue_, "loupe");
  DebugDump::write(texture(gpu::PixelFormat::bgra8Unorm), queue_, "parade");
  const QImage loupe(folder_.filePath("vc-loupe.png"));
  EXPECT_EQ(loupe.size(), QSize(2, 1));
  EXPECT_EQ(loupe.pixelColor(0, 0), QColor(255, 128, 0));
  EXPECT_EQ(loupe.pixelColor(1, 0), QColor(0, 0, 0));
  EXPECT_EQ(QImage(folder_.filePath("vc-parade.png")).pixelColor(0, 0), QColor(0, 128, 255));
  EXPECT_TRUE(log.contains("Velicor: dumped loupe (2x1)"));
}

TEST_F(DebugDumpTest, WritesViews) {
  dumpTo(folder_.filePath("vc"));
  const test::LogRecorder log;
  QWidget view;
  view.resize(30, 20);
  view.setStyleSheet("background: #102030");
  DebugDump::writeView(view, "panel-skin");
  const QImage written(folder_.filePath("vc-panel-skin.png"));
  EXPECT_EQ(written.size(), QSize(30, 20));
  EXPECT_EQ(written.pixelColor(10, 10), QColor(0x10, 0x20, 0x30));
  EXPECT_TRUE(log.contains("Velicor: dumped view panel-skin"));
}

TEST_F(DebugDumpTest, ReplacesLinksAndPipesByFilesForTheOwnerOnly) {
  dumpTo(folder_.filePath("vc"));
  const std::filesystem::path folder = folder_.path().toStdString();
  std::ofstream(folder / "others") << "untouched";
  std::filesystem::create_symlink(folder / "others", folder / "vc-loupe.png");
  ASSERT_EQ(mkfifo((folder / "vc-parade.png").c_str(), 0666), 0);
  const int reader =
      open((folder / "vc-parade.png").c_str(), O_RDONLY | O_NONBLOCK);  // or a writer would wait
  for (const char* name : {"loupe", "parade"}) {
    DebugDump::write(texture(gpu::PixelFormat::rgba8Unorm), queue_, name);
    const std::filesystem::path file = folder / ("vc-" + std::string(name) + ".png");
    const auto status = std::filesystem::symlink_status(file);
    ASSERT_EQ(status.type(), std::filesystem::file_type::regular) << name;
    EXPECT_EQ(status.permissions(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_write)
        << name;
    EXPECT_EQ(QImage(QString::fromStdString(file)).pixelColor(0, 0), QColor(255, 128, 0)) << name;
  }
  close(reader);
  EXPECT_EQ(std::filesystem::file_size(folder / "others"), 9U);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 3) << "nothing else stays";
}

TEST_F(DebugDumpTest, AFileThatCannotBeWrittenIsNoFailure) {
  dumpTo(folder_.filePath("missing/vc"));
  const test::LogRecorder log;
  DebugDump::write(texture(gpu::PixelFormat::rgba8Unorm), queue_, "loupe");
  EXPECT_TRUE(log.contains("Velicor: dumped loupe (2x1)"));
}

TEST_F(DebugDumpTest, SilentWithoutTheVariable) {
  const test::LogRecorder log;
  DebugDump::write(texture(gpu::PixelFormat::rgba8Unorm), queue_, "loupe");
  QWidget view;
  DebugDump::writeView(view, "panel-skin");
  EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace velicor
