#include "platform/x11/connection.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <poll.h>

#include "platform/x11/monitors.h"
#include "platform/x11/properties.h"
#include "platform/x11/session_kind.h"
#include "support/x_client.h"
#include "support/x_server.h"

namespace velicor::x11 {
namespace {

std::unique_ptr<Connection> connect(const test::XServer& server, OwnClients& own) {
  auto connection = Connection::open(server.name(), own);
  EXPECT_TRUE(connection) << connection.error().description;
  return connection ? std::move(*connection) : nullptr;
}

TEST(Connection, NamesTheDisplayThatCanNotBeReached) {
  const auto connection = Connection::open(":65000");
  ASSERT_FALSE(connection);
  EXPECT_EQ(connection.error().code, noServer);
  EXPECT_EQ(connection.error().description, "The X server of display :65000 can't be reached");
}

TEST(Connection, GivesErrorsBackWhereTheyWereMade) {
  const test::XServer server;
  OwnClients own;
  const auto connection = connect(server, own);
  constexpr xcb_window_t nowhere = 0x123;

  const auto reply = connection->reply(xcb_get_geometry_reply, xcb_get_geometry(connection->raw(), nowhere));
  ASSERT_FALSE(reply);
  EXPECT_EQ(reply.error().code, XCB_DRAWABLE);
  EXPECT_EQ(reply.error().description, "BadDrawable from GetGeometry (resource 0x123)");

  EXPECT_EQ(connection->check(xcb_map_window_checked(connection->raw(), nowhere)).error().code, XCB_WINDOW);

  // Nobody waits for this one: it comes to the handler, in its place among the events.
  std::vector<int> codes;
  connection->setErrorHandler([&](const xcb_generic_error_t& error) { codes.push_back(error.error_code); });
  xcb_map_window(connection->raw(), nowhere);
  EXPECT_TRUE(connection->reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection->raw())));
  EXPECT_EQ(connection->nextEvent(), nullptr);
  EXPECT_EQ(codes, std::vector<int>{XCB_WINDOW});
  EXPECT_FALSE(connection->isLost());
}

TEST(Connection, KnowsAtomsAndExtensionsAtOnce) {
  const test::XServer server;
  const test::XClient other(server.name());
  OwnClients own;
  const auto connection = connect(server, own);
  EXPECT_EQ(connection->atom(Atom::netWmState), other.atom("_NET_WM_STATE"));
  EXPECT_EQ(connection->atom(Atom::xrootPixmapId), other.atom("_XROOTPMAP_ID"));
  EXPECT_EQ(connection->compositorSelection(), other.atom("_NET_WM_CM_S0"));
  EXPECT_TRUE(connection->extensions().composite.atLeast(0, 4));
  EXPECT_TRUE(connection->extensions().resource.atLeast(1, 2));
  EXPECT_TRUE(connection->extensions().input.atLeast(2, 1));
  EXPECT_FALSE(connection->extensions().composite.atLeast(1, 0));
  EXPECT_FALSE(connection->extensions().xwayland);
}

TEST(Connection, TellsOnceThatTheServerIsGone) {
  test::XServer server;
  OwnClients own;
  const auto connection = connect(server, own);
  int losses = 0;
  connection->setLossHandler([&] { ++losses; });
  server.program().kill();
  pollfd file{connection->fileDescriptor(), POLLIN, 0};
  ASSERT_EQ(poll(&file, 1, 10000), 1);
  EXPECT_EQ(connection->nextEvent(), nullptr);
  EXPECT_TRUE(connection->isLost());
  const auto reply = connection->reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection->raw()));
  ASSERT_FALSE(reply);
  EXPECT_EQ(reply.error().code, connectionLost);
  EXPECT_EQ(connection->nextEvent(), nullptr);
  EXPECT_EQ(losses, 1);
}

TEST(OwnClients, TellOurWindowsFromOthers) {
  const test::XServer server;
  OwnClients own;
  const auto first = connect(server, own);
  const unsigned before = own.generation();
  auto second = connect(server, own);
  test::XClient other(server.name());
  const xcb_window_t foreign = other.makeWindow({0, 0, 10, 10});
  const std::uint32_t ofSecond = second->newId();
  EXPECT_NE(own.generation(), before);
  EXPECT_TRUE(own.snapshot().made(first->newId()));
  EXPECT_TRUE(own.snapshot().made(ofSecond));
  EXPECT_FALSE(own.snapshot().made(foreign));
  EXPECT_FALSE(own.snapshot().made(first->root()));
  second.reset();
  EXPECT_FALSE(own.snapshot().made(ofSecond));
  other.joinOwn(own);
  EXPECT_TRUE(own.snapshot().made(foreign));
}

TEST(Monitors, AreNamedByTheirAtoms) {
  const test::XServer server("800x600x24");
  OwnClients own;
  const auto connection = connect(server, own);
  test::XClient other(server.name());

  auto monitors = readMonitors(*connection);
  ASSERT_TRUE(monitors);
  ASSERT_EQ(monitors->size(), 1u);
  EXPECT_EQ(monitors->front().rect, (DeviceRect{0, 0, 800, 600}));
  EXPECT_EQ(monitors->front().id, other.atom(monitors->front().name));

  other.defineMonitor("left", {0, 0, 400, 600}, false);
  other.defineMonitor("right", {400, 0, 400, 600}, true);
  monitors = readMonitors(*connection);
  ASSERT_TRUE(monitors);
  const auto right = std::find_if(monitors->begin(), monitors->end(),
                                  [](const Monitor& monitor) { return monitor.name == "right"; });
  ASSERT_NE(right, monitors->end());
  EXPECT_EQ(*right, (Monitor{other.atom("right"), "right", {400, 0, 400, 600}, true}));
}

TEST(Monitors, AreTheWholeRootWithoutAList) {
  const test::XServer server("640x480x24", {"-extension", "RANDR"});
  OwnClients own;
  const auto connection = connect(server, own);
  const auto monitors = readMonitors(*connection);
  ASSERT_TRUE(monitors);
  ASSERT_EQ(monitors->size(), 1u);
  EXPECT_EQ(monitors->front().rect, (DeviceRect{0, 0, 640, 480}));
  EXPECT_NE(monitors->front().id, 0u);
}

TEST(SessionKind, RefusesWaylandInWords) {
  EXPECT_FALSE(waylandRefusal(SessionEnvironment{"x11", ""}));
  EXPECT_FALSE(waylandRefusal(SessionEnvironment{"", ""}));
  const auto byType = waylandRefusal(SessionEnvironment{"wayland", ""});
  ASSERT_TRUE(byType);
  EXPECT_NE(byType->find("Wayland"), std::string::npos);
  EXPECT_TRUE(waylandRefusal(SessionEnvironment{"", "wayland-0"}));
}

TEST(SessionKind, KnowsTheBridgeByItsOutputs) {
  const test::XServer server;
  OwnClients own;
  const auto connection = connect(server, own);
  EXPECT_FALSE(waylandRefusal(*connection));
  test::XClient other(server.name());
  other.defineMonitor("XWAYLAND0", {0, 0, 1280, 800}, true);
  EXPECT_TRUE(waylandRefusal(*connection));
}

TEST(Properties, AreEmptyWhereThereIsNone) {
  const test::XServer server;
  OwnClients own;
  const auto connection = connect(server, own);
  test::XClient other(server.name());
  const xcb_window_t window = other.makeWindow({0, 0, 10, 10});
  other.setNumber(window, "_NET_WM_DESKTOP", 3);
  EXPECT_EQ(propertyNumbers(*connection, window, Atom::netWmDesktop), std::vector<std::uint32_t>{3});
  EXPECT_TRUE(propertyNumbers(*connection, window, Atom::netWmState).empty());
  EXPECT_EQ(propertyText(*connection, window, Atom::netWmDesktop), "");
  other.destroy(window);
  EXPECT_TRUE(propertyNumbers(*connection, window, Atom::netWmDesktop).empty());
}

}  // namespace
}  // namespace velicor::x11
