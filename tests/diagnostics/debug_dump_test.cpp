#include "diagnostics/debug_dump.h"

#include <array>
#include <cstdlib>
#include <utility>

#include <gtest/gtest.h>
#include <QColor>
#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QWidget>

#include "platform/gpu/native/native_device.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"

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

TEST_F(DebugDumpTest, AnEmptyPrefixMeansTheWorkingDirectory) {
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder_.path()));
  dumpTo("");
  DebugDump::write(texture(gpu::PixelFormat::rgba8Unorm), queue_, "loupe");
  QDir::setCurrent(before);
  EXPECT_TRUE(QFile::exists(folder_.filePath("-loupe.png")));
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

// The switch is read once, so that each value needs a process of its own. Ends it with 0 when counting works
// and can't be switched off again, with 20 when it is off.
[[noreturn]] void countAndExit() {
  const test::LogRecorder log;
  DebugDump::tick("captured");
  if (!DebugDump::statsEnabled()) std::exit(20);
  qunsetenv("VELICOR_STATS");
  DebugDump::tick("captured");
  std::exit(test::waitUntil([&] { return log.contains("Velicor stats/s: captured=2"); }) ? 0 : 1);
}

TEST(DebugDump, StatisticsNeedExactlyOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const auto& [value, status] : {std::pair("1", 0), std::pair("01", 20), std::pair("true", 20)}) {
    qputenv("VELICOR_STATS", value);
    EXPECT_EXIT(countAndExit(), testing::ExitedWithCode(status), "") << value;
  }
  qunsetenv("VELICOR_STATS");
  EXPECT_EXIT(countAndExit(), testing::ExitedWithCode(20), "");
}

}  // namespace
}  // namespace velicor
