#include "platform/desktop/stacking.h"

#include <algorithm>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velicor::desktop {
namespace {

using testing::IsEmpty;

constexpr DeviceRect place{100, 100, 200, 200};

StackedWindow ordinary(WindowId id, DeviceRect rect = place) {
  return {id, rect, StackedBy::manager, true, {}};
}
StackedWindow popup(WindowId id, DeviceRect rect = place) { return {id, rect, StackedBy::itself, true, {}}; }
StackedWindow bypassing(WindowId id, int level) {
  return {id, place, StackedBy::itself, false, OwnWindow{level, true}};
}
StackedWindow ownManaged(WindowId id, int level, DeviceRect rect = place) {
  return {id, rect, StackedBy::manager, false, OwnWindow{level, false}};
}

constexpr DeviceRect taskbar{0, 800, 1000, 30};

constexpr WindowId loupe = 3;
constexpr WindowId scopes = 4;
constexpr WindowId hint = 5;

TEST(Stacking, theLoupeStandsAboveOrdinaryWindowsAndBelowItsBetters) {
  struct Case {
    const char* name;
    Stack stack;
    std::vector<RestackStep> steps;
  };
  const Case cases[] = {
      {"nothing is there", {}, {}},
      {"already in its place", {ordinary(10), bypassing(loupe, 3), ownManaged(scopes, 4)}, {}},
      {"below ordinary windows",
       {bypassing(loupe, 3), ordinary(10), ordinary(11), ownManaged(scopes, 4)},
       {{loupe, 11, true}}},
      {"above a higher window of ours",
       {ordinary(10), ownManaged(scopes, 4), bypassing(loupe, 3)},
       {{loupe, 10, true}}},
      {"above a higher window of ours alone",
       {ownManaged(scopes, 4), bypassing(loupe, 3)},
       {{loupe, scopes, false}}},
      {"a full screen window above the scopes",
       {bypassing(loupe, 3), ownManaged(scopes, 4), ordinary(10)},
       {{loupe, 10, true}}},
      {"a taskbar above the scopes, beside both",
       {ordinary(10), ownManaged(scopes, 4), ordinary(11, taskbar), bypassing(loupe, 3)},
       {{loupe, 10, true}}},
      {"one that holds a status icon of ours",
       {ordinary(10), ownManaged(scopes, 4), ownManaged(11, 0, taskbar), bypassing(loupe, 3)},
       {{loupe, 10, true}}},
      {"a foreign popup is not fought", {ordinary(10), bypassing(loupe, 3), popup(20)}, {}},
      {"nor climbed over", {bypassing(loupe, 3), ordinary(10), popup(20)}, {{loupe, 10, true}}},
      {"nor slipped under to get below the scopes",
       {ownManaged(scopes, 4), popup(20), bypassing(loupe, 3)},
       {}},
      {"the levels of bypassing windows",
       {bypassing(hint, 5), bypassing(loupe, 3), ordinary(10)},
       {{loupe, 10, true}, {hint, loupe, true}}}};
  for (const Case& each : cases)
    EXPECT_EQ(restackSteps(each.stack), each.steps) << each.name;
}

class RandomStack : public testing::TestWithParam<unsigned> {};

Stack carryOut(Stack stack, const std::vector<RestackStep>& steps) {
  for (const RestackStep& step : steps) {
    const auto moved = *std::ranges::find(stack, step.window, &StackedWindow::id);
    std::erase(stack, moved);
    const auto sibling = std::ranges::find(stack, step.sibling, &StackedWindow::id);
    stack.insert(sibling + (step.above ? 1 : 0), moved);
  }
  return stack;
}

// After one round there is nothing left to ask for, so that two of us could never chase each other.
TEST_P(RandomStack, oneRoundIsEnough) {
  std::mt19937 random(GetParam());
  for (int round = 0; round < 500; ++round) {
    Stack stack{bypassing(loupe, 3), bypassing(hint, 5), ownManaged(scopes, 4)};
    for (WindowId id = 10; id < 15; ++id)
      stack.push_back(random() % 2 == 0 ? ordinary(id, random() % 2 == 0 ? place : taskbar) : popup(id));
    std::ranges::shuffle(stack, random);
    const Stack settled = carryOut(stack, restackSteps(stack));
    ASSERT_THAT(restackSteps(settled), IsEmpty());
    const auto index = [&](WindowId id) { return std::ranges::find(settled, id, &StackedWindow::id); };
    EXPECT_LT(index(loupe), index(hint));
    for (const StackedWindow& window : settled) {
      const bool foreign = !window.own && window.stackedBy == StackedBy::manager && window.rect == place;
      EXPECT_TRUE(!foreign || index(window.id) < index(loupe));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomStack, testing::Values(1U, 2U, 3U));

TEST(Stacking, coveredMeansNoPixelIsLeft) {
  const StackedWindow left = popup(20, {0, 0, 200, 1000});
  const StackedWindow right = popup(21, {200, 0, 200, 1000});
  EXPECT_TRUE(isCovered({bypassing(loupe, 3), left, right}, loupe));
  EXPECT_FALSE(isCovered({bypassing(loupe, 3), left}, loupe));
  EXPECT_FALSE(isCovered({left, right, bypassing(loupe, 3)}, loupe));
  EXPECT_TRUE(isCovered({left}, loupe));
}

TEST(Stacking, overtoppedMeansOneOrdinaryWindowAboveAllOfIt) {
  const StackedWindow left = ordinary(20, {0, 0, 200, 1000});
  const StackedWindow right = ordinary(21, {200, 0, 200, 1000});
  EXPECT_TRUE(isOvertopped({ownManaged(scopes, 4), ordinary(10)}, scopes));
  EXPECT_FALSE(isOvertopped({ordinary(10), ownManaged(scopes, 4)}, scopes));
  EXPECT_FALSE(isOvertopped({ownManaged(scopes, 4), left, right}, scopes)) << "a message, for example";
  EXPECT_FALSE(isOvertopped({ownManaged(scopes, 4), popup(20), bypassing(loupe, 3)}, scopes));
  EXPECT_TRUE(isOvertopped({ordinary(10)}, scopes)) << "it was put away";
  EXPECT_FALSE(isInFront({ownManaged(scopes, 4), left}, scopes));
  EXPECT_TRUE(isInFront({left, ownManaged(scopes, 4), popup(20), bypassing(loupe, 3)}, scopes));
}

TEST(Stacking, whatCanBeSeenThroughOrIsOursCoversNothing) {
  StackedWindow glass = popup(20, {0, 0, 1000, 1000});
  glass.opaque = false;
  StackedWindow own = ownManaged(scopes, 4);
  own.rect = {0, 0, 1000, 1000};
  own.opaque = true;
  EXPECT_FALSE(isCovered({bypassing(loupe, 3), glass, own}, loupe));
}

}  // namespace
}  // namespace velicor::desktop
