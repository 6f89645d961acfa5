#include "platform/desktop/opener.h"

#include <fstream>

#include <gtest/gtest.h>
#include <QFile>
#include <QTemporaryDir>

#include "support/main_loop.h"

namespace velicor::desktop {
namespace {

TEST(OpenerTest, StartsTheUsersProgramOrSaysThatThereIsNone) {
  const QTemporaryDir folder;
  const std::string home = folder.path().toStdString();
  qputenv("XDG_DATA_HOME", folder.path().toUtf8());
  qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
  qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  std::filesystem::create_directory(home + "/applications");
  std::ofstream(home + "/applications/copy.desktop")
      << "[Desktop Entry]\nType=Application\nName=Copy\nExec=cp %f " << home << "/copied\n";
  std::ofstream(home + "/mimeapps.list")
      << "[Default Applications]\napplication/x-apple-diskimage=copy.desktop\n"
      << "application/octet-stream=copy.desktop\n";
  std::ofstream(home + "/Velicor 1.3.dmg") << "image";

  EXPECT_TRUE(systemOpener().openFile(home + "/Velicor 1.3.dmg"));
  EXPECT_TRUE(test::waitUntil([&] { return QFile(folder.filePath("copied")).size() == 5; }));
  EXPECT_FALSE(systemOpener().openFile(home + "/missing.dmg"));
  EXPECT_FALSE(systemOpener().openUrl("velicor-unknown:x"));
}

}  // namespace
}  // namespace velicor::desktop
