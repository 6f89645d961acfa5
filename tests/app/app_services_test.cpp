#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "app/gestures.h"
#include "app/support_mail.h"

namespace velicor {
namespace {

struct OpenerThatRemembers : desktop::Opener {
  Status openUrl(const std::string& url) override {
    opened = url;
    return {};
  }
  Status openFile(const std::filesystem::path&) override { return {}; }
  std::string opened;
};

TEST(SupportMailTest, carriesSubjectAndSignaturePercentEncoded) {
  EXPECT_EQ(SupportMail::address("1.3", "Fedora & \"Friends\" 40"),
            "mailto:support@velicor.example?subject=Velicor%20Support&body=%0A%0A%E2%80%94%0AVelicor%201.3%20%C2%B7%20"
            "macOS%20Fedora%20%26%20%22Friends%22%2040");
  OpenerThatRemembers opener;
  SupportMail::compose(opener);
  EXPECT_TRUE(opener.opened.starts_with("mailto:support@velicor.example?subject=")) << opener.opened;
}

TEST(GesturesTest, theReadmeHasThemAll) {
  std::ifstream file(VELICOR_README);
  const std::string readme{std::istreambuf_iterator<char>(file), {}};
  for (const GestureGroup& group : gestureGroups()) {
    for (const auto& [how, what] : group.gestures) {
      const std::string row = "| " + std::string(how) + " | " + std::string(what) + " |\n";
      EXPECT_NE(readme.find(row), std::string::npos) << row;
    }
  }
}

}  // namespace
}  // namespace velicor
