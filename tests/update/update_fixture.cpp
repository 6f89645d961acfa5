#include "update/update_fixture.h"

#include <algorithm>
#include <map>

#include <QJsonDocument>
#include <QRegion>
#include <QWidget>

#include "controls/push_button.h"
#include "support/main_loop.h"

namespace velicor::test {

UpdateFixture::~UpdateFixture() { settle(); }

QByteArray UpdateFixture::feed(const QJsonObject& changes) {
  const int nextBuild = std::stoi(std::string(product::build())) + 1;
  QJsonObject entry{{"version", "1.3"}, {"build", nextBuild}, {"url", "https://velicor.example/Velicor-1.3.dmg"}};
  for (auto member = changes.begin(); member != changes.end(); ++member)
    entry[member.key()] = member.value();
  return WebSite::answer(QJsonDocument(entry).toJson());
}

bool UpdateFixture::reaches(Phase::Case phase) {
  const bool reached = waitUntil([&] { return checker.phase().which == phase; });
  settle();
  return reached;
}

void UpdateFixture::offer(const QJsonObject& changes) {
  serveFeed(feed(changes));
  checker.checkNow();
  ASSERT_TRUE(reaches(Phase::offer));
}

std::string UpdateFixture::shown() {
  std::map<std::pair<int, int>, std::string> texts;
  for (QWidget* child : UpdateWindow::window()->findChildren<QWidget*>()) {
    const auto* facts = dynamic_cast<controls::Accessible*>(child);
    if (!facts || child->visibleRegion().isEmpty() || facts->accessibleText().isEmpty()) continue;
    std::string text = facts->accessibleText().remove(QChar(0x200B)).toStdString();
    const auto* button = dynamic_cast<controls::PushButton*>(child);
    if (button) text = "[" + text + (button->isDefault() ? "*]" : "]");
    const QPoint place = child->mapTo(UpdateWindow::window(), QPoint());
    texts[{place.y(), place.x()}] = text;
  }
  std::string all;
  for (const auto& [place, text] : texts)
    all += (all.empty() ? "" : " / ") + text;
  return all;
}

void UpdateFixture::click(const std::string& title) {
  for (auto* child : UpdateWindow::window()->findChildren<QWidget*>()) {
    auto* button = dynamic_cast<controls::PushButton*>(child);
    if (button && QString(button->title()).remove(QChar(0x200B)).toStdString() == title)
      return button->click();
  }
  FAIL() << "no button " << title << " in: " << shown();
}

std::vector<std::string> UpdateFixture::updatesFolder() const {
  std::vector<std::string> names;
  std::error_code missing;
  for (const auto& entry : std::filesystem::directory_iterator(caches / "Updates", missing))
    names.push_back(entry.path().filename());
  return names;
}

}  // namespace velicor::test
