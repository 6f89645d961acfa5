#include "platform/notifications/notification_center.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "platform/dispatch/main_queue.h"
#include "support/main_loop.h"

namespace velicor::notifications {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr Name ready{"Ready"};
constexpr Name other{"Other"};

class NotificationCenterTest : public testing::Test {
 protected:
  Subscription record(Name name, std::string label) {
    return center.addObserver(name, [this, label] { calls.push_back(label); });
  }

  std::vector<std::string> calls;
  NotificationCenter center;
};

TEST_F(NotificationCenterTest, ReachesTheObserversOfTheNameInOrderAndAtOnce) {
  const Subscription first = record(ready, "first");
  const Subscription elsewhere = record(other, "elsewhere");
  const Subscription second = record(ready, "second");
  center.post(ready);
  EXPECT_THAT(calls, ElementsAre("first", "second"));
}

TEST_F(NotificationCenterTest, ARegistrationLastsAsLongAsItsToken) {
  Subscription token = record(ready, "first");
  Subscription moved = std::move(token);
  center.post(ready);
  moved = record(ready, "replacement");
  center.post(ready);
  moved = {};
  center.post(ready);
  EXPECT_THAT(calls, ElementsAre("first", "replacement"));
}

TEST_F(NotificationCenterTest, HandlersChangeTheRegistrationsWhileAPostIsUnderWay) {
  Subscription self;
  Subscription later;
  Subscription added;
  auto guard = std::make_shared<int>(7);
  self = center.addObserver(ready, [&, guard] {
    self = {};
    later = {};
    added = record(ready, "added");
    // What the handler holds stays alive until it returns, although its registration is gone.
    calls.push_back("self " + std::to_string(*guard));
  });
  later = record(ready, "later");
  const Subscription last = record(ready, "last");
  center.post(ready);
  EXPECT_THAT(calls, ElementsAre("self 7", "last"));
  EXPECT_EQ(guard.use_count(), 1);
  calls.clear();
  center.post(ready);
  EXPECT_THAT(calls, ElementsAre("last", "added"));
}

TEST_F(NotificationCenterTest, PostsOfOtherThreadsArriveOnTheMainThread) {
  std::thread::id where;
  const Subscription token = center.addObserver(ready, [&] { where = std::this_thread::get_id(); });
  std::thread([this] { center.post(ready); }).join();
  EXPECT_EQ(where, std::thread::id());
  test::settle();
  EXPECT_EQ(where, std::this_thread::get_id());
}

TEST_F(NotificationCenterTest, APostStillUnderWayForgetsACentreThatIsGone) {
  auto passing = std::make_unique<NotificationCenter>();
  const Subscription token = passing->addObserver(ready, [this] { calls.push_back("late"); });
  std::thread([&passing] { passing->post(ready); }).join();
  passing.reset();
  test::settle();
  EXPECT_THAT(calls, IsEmpty());
}

}  // namespace
}  // namespace velicor::notifications
