#include "program/assistive_tool.h"

#include <algorithm>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>

#include "support/main_loop.h"

namespace velicor::test {

namespace {

const QString connectionName = "assistive";
const QString accessible = "org.a11y.atspi.Accessible";
const QString properties = "org.freedesktop.DBus.Properties";

enum State { checked = 4, focusedState = 12, selectedState = 23, showingState = 25 };

QString busAddress(const SessionBus& session) {
  const auto call =
      QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
  return session.connection().call(call).arguments().value(0).toString();
}

}  // namespace

AssistiveTool::AssistiveTool(const SessionBus& session)
    : bus_(QDBusConnection::connectToBus(busAddress(session), connectionName)) {}

AssistiveTool::~AssistiveTool() { QDBusConnection::disconnectFromBus(connectionName); }

QVariantList AssistiveTool::ask(const Thing& thing, const QString& interface, const QString& method,
                                const QVariantList& arguments) {
  QDBusMessage call = QDBusMessage::createMethodCall(thing.service, thing.path, interface, method);
  call.setArguments(arguments);
  return bus_.call(call).arguments();
}

QString AssistiveTool::property(const Thing& thing, const QString& name) {
  return ask(thing, properties, "Get", {accessible, name}).value(0).value<QDBusVariant>().variant().toString();
}

std::vector<AssistiveTool::Thing> AssistiveTool::childrenOf(const Thing& thing) {
  std::vector<Thing> children;
  const QVariantList answer = ask(thing, accessible, "GetChildren");
  if (answer.isEmpty() || !answer[0].canConvert<QDBusArgument>()) return children;
  const auto list = answer[0].value<QDBusArgument>();
  for (list.beginArray(); !list.atEnd();) {
    QDBusObjectPath path;
    Thing child;
    list.beginStructure();
    list >> child.service >> path;
    list.endStructure();
    child.path = path.path();
    children.push_back(child);
  }
  list.endArray();
  return children;
}

void AssistiveTool::lookAt(Thing& thing) {
  const QVariantList answer = ask(thing, accessible, "GetState");
  if (answer.isEmpty() || !answer[0].canConvert<QDBusArgument>()) return;
  QList<uint> words;
  answer[0].value<QDBusArgument>() >> words;
  const auto has = [&words](State state) { return (words.value(state / 32) >> (state % 32) & 1U) != 0; };
  thing.showing = has(showingState);
  thing.focused = has(focusedState);
  thing.checked = has(checked);
  thing.selected = has(selectedState);
}

void AssistiveTool::describe(Thing& thing) {
  thing.role = ask(thing, accessible, "GetRoleName").value(0).toString().toStdString();
  thing.name = property(thing, "Name").toStdString();
  thing.description = property(thing, "Description").toStdString();
}

void AssistiveTool::lookInto(const Thing& thing, std::vector<Thing>& found) {
  for (Thing& child : childrenOf(thing)) {
    lookAt(child);
    if (!child.showing) continue;
    found.push_back(child);
    lookInto(child, found);
  }
}

std::vector<AssistiveTool::Thing> AssistiveTool::showing() {
  std::vector<Thing> found;
  lookInto({.service = "org.a11y.atspi.Registry", .path = "/org/a11y/atspi/accessible/root"}, found);
  return found;
}

std::optional<AssistiveTool::Thing> AssistiveTool::find(const std::string& name) {
  std::optional<Thing> result;
  waitUntil([&] {
    for (Thing& thing : showing()) {
      describe(thing);
      const bool isControl = thing.role != "label" && thing.role != "filler";
      if (thing.name != name || !isControl) continue;
      result = thing;
      break;
    }
    return result.has_value();
  });
  return result;
}

std::optional<AssistiveTool::Thing> AssistiveTool::focused() {
  std::vector<Thing> all = showing();
  const auto found = std::ranges::find_if(all, &Thing::focused);
  if (found == all.end()) return std::nullopt;
  describe(*found);
  return *found;
}

void AssistiveTool::press(const Thing& thing) { ask(thing, "org.a11y.atspi.Action", "DoAction", {0}); }

double AssistiveTool::value(const Thing& thing) {
  return ask(thing, properties, "Get", {"org.a11y.atspi.Value", "CurrentValue"})
      .value(0)
      .value<QDBusVariant>()
      .variant()
      .toDouble();
}

void AssistiveTool::setValue(const Thing& thing, double value) {
  ask(thing, properties, "Set",
      {"org.a11y.atspi.Value", "CurrentValue", QVariant::fromValue(QDBusVariant(value))});
}

}  // namespace velicor::test
