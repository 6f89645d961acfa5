#include "palette/palette.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace velicor {
namespace {

using testing::ElementsAre;

TEST(Palette, StandardColoursAndTheirForms) {
  EXPECT_THAT(Palette::standard().stored(),
              ElementsAre("#FFF200", "#00FF26", "#FF1ABF", "#6B008C", "#5233BF", "#2E73CC", "#40AD61",
                          "#EBD11A", "#FF730D", "#FF2608", "#FF0000"));
  const Palette::Buffer buffer = Palette::standard().buffer();
  EXPECT_EQ(sizeof buffer, 176U);
  EXPECT_EQ(buffer[0], (std::array<float, 4>{1.0F, 0.95F, 0.0F, 1.0F}));
  EXPECT_EQ(buffer[2], (std::array<float, 4>{1.0F, 0.1F, 0.75F, 1.0F}));
  EXPECT_EQ(buffer[6], (std::array<float, 4>{0.25F, 0.68F, 0.38F, 1.0F}));
  EXPECT_EQ(buffer[10], (std::array<float, 4>{1.0F, 0.0F, 0.0F, 1.0F}));
}

TEST(Palette, HexTextsThatAreColours) {
  const Palette::RGB yellow{1.0, 242.0 / 255, 0.0};
  for (const char* text : {"#FFF200", "fff200", "FfF200"})
    EXPECT_EQ(Palette::RGB::fromHex(text), yellow) << text;
  EXPECT_EQ(Palette::RGB::fromHex("+0F00A"), (Palette::RGB{0, 240.0 / 255, 10.0 / 255}));
  EXPECT_EQ(Palette::RGB::fromHex("#-00001"), (Palette::RGB{1, 1, 1}));
}

TEST(Palette, HexTextsThatAreNone) {
  for (const char* text : {"", "#", "#FFF", "#FFF200FF", "##FFF200", "##FF200", "#FFF20G", " #FFF200",
                           "FFF20 ", " FF200", "+-F200", "-+F200", "0xF200", "++F200", "FFFF\xC3\xA9"}) {
    EXPECT_FALSE(Palette::RGB::fromHex(text)) << text;
  }
}

TEST(Palette, HexRoundsHalvesUpAndStaysInRange) {
  EXPECT_EQ((Palette::RGB{0.1, 0.95, 0.15}.hex()), "#1AF226");
  EXPECT_EQ((Palette::RGB{-0.2, 1.3, 0.0}.hex()), "#00FF00");
}

TEST(Palette, RestoresOnlyAWholePalette) {
  Palette changed;
  changed.skinOn = {0.25, 0.5, 0.75};
  changed.heat[7] = {0.1, 0.2, 0.3};
  const std::vector<std::string> stored = changed.stored();
  const Palette restored(stored);
  EXPECT_EQ(restored.stored(), stored);
  EXPECT_EQ(restored.skinOn, (Palette::RGB{64.0 / 255, 128.0 / 255, 191.0 / 255}));
  EXPECT_NE(restored, changed);  // quantised

  auto shorter = stored, longer = stored, unreadable = stored;
  shorter.pop_back();
  longer.push_back("#000000");
  unreadable[10] = "red";
  for (const auto& wrong : {shorter, longer, unreadable})
    EXPECT_EQ(Palette(wrong), Palette::standard());
}

}  // namespace
}  // namespace velicor
