// Off the screen and back: by the global shortcut, by starting the program again, and from the status area.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QTemporaryDir>

#include "platform/tray/bus_object.h"
#include "platform/tray/bus_types.h"
#include "program/stage.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

using namespace std::chrono_literals;

constexpr QColor ground(0x99, 0x99, 0x99);
constexpr int tolerance = 10;  // the line over whatever the root window is captured as

// How often each of the process's threads has been given the processor.
std::map<std::string, long> contextSwitches(qint64 process) {
  std::map<std::string, long> counts;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    std::ifstream status(thread.path() / "status");
    for (std::string line; std::getline(status, line);) {
      if (line.find("ctxt_switches:") == std::string::npos) continue;
      counts[thread.path().filename()] += std::stol(line.substr(line.find(':') + 1));
    }
  }
  return counts;
}

// Threads that have ended since then count for nothing.
long switchesSince(std::map<std::string, long> before, qint64 process) {
  long sum = 0;
  for (const auto& [thread, count] : contextSwitches(process)) sum += count - before[thread];
  return sum;
}

class HidingTest : public testing::Test {
 protected:
  HidingTest() { stage_.painter().setColour(stage_.painter().root(), 0x999999); }

  testing::AssertionResult isShown() { return stage_.shows(onFrameLine(loupeAtStart), frameYellow, tolerance); }
  testing::AssertionResult isHidden() { return stage_.shows(onFrameLine(loupeAtStart), ground); }
  void strikeShortcut() { stage_.mouse().strike({key::control, key::alt, key::super, key::s}); }

  Stage stage_{Surroundings::windowManager};
};

TEST_F(HidingTest, HiddenItCostsNothingAndTheShortcutBringsItBack) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(isShown()) << velicor.log();
  ASSERT_TRUE(velicor.waitForLog("no status area")) << velicor.log();
  strikeShortcut();
  ASSERT_TRUE(isHidden()) << velicor.log();
  waitUntil([] { return false; }, 1500ms);
  const auto before = contextSwitches(velicor.processID());
  waitUntil([] { return false; }, 6s);
  EXPECT_LE(switchesSince(before, velicor.processID()), 2) << "fewer than 20 a minute";
  for (int x = 300; x < 900; x += 7) stage_.mouse().moveTo({x, 400});
  EXPECT_LE(switchesSince(before, velicor.processID()), 4) << "the mouse is nothing to it";
  strikeShortcut();
  EXPECT_TRUE(isShown()) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
}

TEST_F(HidingTest, ASecondStartBringsTheFirstBack) {
  RunningVelicor velicor(stage_.launch());
  ASSERT_TRUE(isShown()) << velicor.log();
  strikeShortcut();
  ASSERT_TRUE(isHidden());
  RunningVelicor second(stage_.launch());
  EXPECT_EQ(second.waitForExit(), 0) << second.log();
  EXPECT_EQ(second.log(), "");
  EXPECT_TRUE(isShown()) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
  RunningVelicor third(stage_.launch());
  EXPECT_TRUE(isShown()) << "the first one is gone: " << third.log();
}

// A message bus of its own, with what a desktop's panel does for status items.
class StatusArea : public tray::BusObject {
 public:
  explicit StatusArea(const QDBusConnection& bus)
      : BusObject(bus, "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher", ""), bus_(bus) {
    bus_.registerService(name);
  }
  ~StatusArea() override { bus_.unregisterService(name); }

  // Of the item, once it has come.
  bool hasItem() const { return waitUntil([this] { return !item_.isEmpty(); }); }

  QVariantList ask(const QString& path, const QString& interface, const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(item_, path, interface, method);
    message.setArguments(arguments);
    return bus_.call(message).arguments();
  }

  QVariant property(const QString& which) {
    return ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get", {"org.kde.StatusNotifierItem", which})
        .value(0)
        .value<QDBusVariant>()
        .variant();
  }

  QList<tray::MenuNode> menu() {
    ask("/MenuBar", menuInterface, "AboutToShow", {0});
    const QVariantList layout = ask("/MenuBar", menuInterface, "GetLayout", {0, -1, QStringList()});
    return qdbus_cast<tray::MenuNode>(layout.value(1)).children;
  }

  void choose(int id) {
    ask("/MenuBar", menuInterface, "Event", {id, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
  }

 protected:
  QVariantMap properties() const override { return {{"IsStatusNotifierHostRegistered", true}}; }
  std::optional<QVariantList> call(const QString& method, const QVariantList& arguments) override {
    if (method == "RegisterStatusNotifierItem") item_ = arguments.value(0).toString();
    return QVariantList();
  }

 private:
  inline static const QString name = "org.kde.StatusNotifierWatcher";
  inline static const QString menuInterface = "com.canonical.dbusmenu";
  QDBusConnection bus_;
  QString item_;
};

class StatusAreaTest : public HidingTest {
 protected:
  StatusAreaTest() {
    tray::registerBusTypes();
    waitUntil([this] { return QFile::exists(folder_.filePath("bus")); });
  }
  ~StatusAreaTest() override { QDBusConnection::disconnectFromBus("panel"); }

  QDBusConnection connection() const { return QDBusConnection::connectToBus(QString::fromStdString(address_), "panel"); }

  QTemporaryDir folder_;
  const std::string address_ = "unix:path=" + folder_.filePath("bus").toStdString();
  Program bus_{{"dbus-daemon", "--session", "--nofork", "--address=" + address_}};
};

TEST_F(StatusAreaTest, TheIconComesWithAStatusAreaThatStartsLaterAndAgain) {
  Launch launch = stage_.launch();
  launch.environment = {"DBUS_SESSION_BUS_ADDRESS=" + address_};
  RunningVelicor velicor(launch);
  ASSERT_TRUE(isShown()) << velicor.log();
  {
    StatusArea area(connection());
    ASSERT_TRUE(area.hasItem()) << velicor.log();
    EXPECT_EQ(area.property("Title").toString(), "Velicor");
    EXPECT_TRUE(area.property("ItemIsMenu").toBool());
    const auto pixmaps = qdbus_cast<QList<tray::IconPixmap>>(area.property("IconPixmap"));
    ASSERT_FALSE(pixmaps.isEmpty());
    EXPECT_EQ(pixmaps.front().argb.size(), pixmaps.front().width * pixmaps.front().height * 4);
    const auto menu = area.menu();
    ASSERT_GE(menu.size(), 7);
    EXPECT_EQ(menu[0].properties["label"], "Hide to Menu Bar");
    EXPECT_EQ(menu[2].properties["type"], "separator");
    EXPECT_EQ(menu[4].properties["toggle-state"], 1);
    area.choose(menu[0].id);
    EXPECT_TRUE(isHidden());
    area.choose(menu[0].id);  // as it was before: nothing
  }
  StatusArea again(connection());
  ASSERT_TRUE(again.hasItem()) << velicor.log();
  const auto menu = again.menu();
  EXPECT_EQ(menu[0].properties["label"], "Show Velicor");
  EXPECT_EQ(menu[4].properties["enabled"], false);
  again.choose(menu[0].id);
  EXPECT_TRUE(isShown()) << velicor.log();
  EXPECT_EQ(velicor.terminate(), 0);
}

}  // namespace
}  // namespace velicor::test
