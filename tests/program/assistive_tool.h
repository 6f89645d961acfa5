#pragma once

#include <optional>
#include <string>
#include <vector>

#include <QDBusConnection>
#include <QDBusObjectPath>

#include "program/status_area.h"

namespace velicor::test {

// What a screen reader does: asks the program over the accessibility bus what is on its windows, and acts on it.
class AssistiveTool {
 public:
  // Beside this bus an accessibility service is started.
  explicit AssistiveTool(const SessionBus& session);
  ~AssistiveTool();

  // What a program must have in its environment beside the session bus's.
  static std::string environment() { return "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1"; }

  // One thing on a window as it was when it was looked at.
  struct Thing {
    QString service;
    QString path;
    std::string role{};
    std::string name{};
    std::string description{};
    bool showing = false;
    bool focused = false;
    bool checked = false;
    bool selected = false;
  };

  // The first control of that name; waits for it.
  std::optional<Thing> find(const std::string& name);

  // What has the keyboard now.
  std::optional<Thing> focused();

  void press(const Thing& thing);
  double value(const Thing& thing);
  void setValue(const Thing& thing, double value);

 private:
  QVariantList ask(const Thing& thing, const QString& interface, const QString& method, const QVariantList& arguments = {});
  QString property(const Thing& thing, const QString& name);
  std::vector<Thing> childrenOf(const Thing& thing);
  void lookInto(const Thing& thing, std::vector<Thing>& found);
  void lookAt(Thing& thing);
  void describe(Thing& thing);

  // What shows in the programs that are there, window by window, from the outside inwards; not described.
  std::vector<Thing> showing();


  QDBusConnection bus_;
};

}  // namespace velicor::test
