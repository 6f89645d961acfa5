#include "platform/tray/menu_exporter.h"

#include <algorithm>
#include <utility>

#include "platform/dispatch/main_queue.h"

namespace velicor::tray {

namespace {

constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr uint protocolVersion = 3;

constexpr const char* menuDescription = R"xml(
<property name="Version" type="u" access="read"/>
<property name="TextDirection" type="s" access="read"/>
<property name="Status" type="s" access="read"/>
<property name="IconThemePath" type="as" access="read"/>
<method name="GetLayout"><arg type="i" direction="in"/><arg type="i" direction="in"/>
<arg type="as" direction="in"/><arg type="u" direction="out"/><arg type="(ia{sv}av)" direction="out"/></method>
<method name="GetGroupProperties"><arg type="ai" direction="in"/><arg type="as" direction="in"/>
<arg type="a(ia{sv})" direction="out"/></method>
<method name="GetProperty"><arg type="i" direction="in"/><arg type="s" direction="in"/>
<arg type="v" direction="out"/></method>
<method name="Event"><arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="in"/>
<arg type="u" direction="in"/></method>
<method name="EventGroup"><arg type="a(isvu)" direction="in"/><arg type="ai" direction="out"/></method>
<method name="AboutToShow"><arg type="i" direction="in"/><arg type="b" direction="out"/></method>
<method name="AboutToShowGroup"><arg type="ai" direction="in"/><arg type="ai" direction="out"/>
<arg type="ai" direction="out"/></method>
<signal name="ItemsPropertiesUpdated"><arg type="a(ia{sv})"/><arg type="a(ias)"/></signal>
<signal name="LayoutUpdated"><arg type="u"/><arg type="i"/></signal>
<signal name="ItemActivationRequested"><arg type="i"/><arg type="u"/></signal>)xml";

// Underscores mark mnemonics.
QString label(QString title) { return title.replace(QLatin1Char('_'), QLatin1String("__")); }

// By the protocol's names of the modifiers.
MenuShortcut shortcutOf(const QKeySequence& keys) {
  const QKeyCombination combination = keys[0];
  QStringList step;
  if (combination.keyboardModifiers().testFlag(Qt::ControlModifier)) step << QStringLiteral("Control");
  if (combination.keyboardModifiers().testFlag(Qt::AltModifier)) step << QStringLiteral("Alt");
  if (combination.keyboardModifiers().testFlag(Qt::ShiftModifier)) step << QStringLiteral("Shift");
  if (combination.keyboardModifiers().testFlag(Qt::MetaModifier)) step << QStringLiteral("Super");
  return {step << QKeySequence(combination.key()).toString(QKeySequence::PortableText).toLower()};
}

bool looksLike(const desktop::Menu& a, const desktop::Menu& b);

bool looksLike(const desktop::MenuItem& a, const desktop::MenuItem& b) {
  return a.title == b.title && a.enabled == b.enabled && a.checked == b.checked && a.shortcut == b.shortcut &&
         looksLike(a.submenu, b.submenu);
}

bool looksLike(const desktop::Menu& a, const desktop::Menu& b) {
  return std::ranges::equal(a, b, [](const auto& x, const auto& y) { return looksLike(x, y); });
}

}  // namespace

MenuExporter::MenuExporter(const QDBusConnection& bus) : BusObject(bus, path, menuInterface, menuDescription) {
  registerBusTypes();
}

void MenuExporter::setMenu(desktop::Menu menu) {
  const bool isNew = !looksLike(menu, menu_);
  if (isNew) firstId_ += static_cast<int>(entries_.size());
  menu_ = std::move(menu);
  entries_.clear();
  top_ = number(menu_);
  if (!isNew) return;
  ++revision_;
  emitSignal("LayoutUpdated", {revision_, 0});
}

std::vector<int> MenuExporter::number(const desktop::Menu& menu) {
  std::vector<int> ids;
  for (const desktop::MenuItem& item : menu) {
    const std::size_t index = entries_.size();
    ids.push_back(firstId_ + static_cast<int>(index));
    entries_.push_back({&item});
    std::vector<int> children = number(item.submenu);
    entries_[index].children = std::move(children);
  }
  return ids;
}

const MenuExporter::Entry* MenuExporter::find(int id) const {
  const int index = id - firstId_;
  return index >= 0 && std::cmp_less(index, entries_.size()) ? &entries_[static_cast<std::size_t>(index)] : nullptr;
}

QVariantMap MenuExporter::describe(const desktop::MenuItem& item) {
  if (item.isSeparator()) return {{QStringLiteral("type"), QStringLiteral("separator")}};
  QVariantMap result{{QStringLiteral("label"), label(item.title)}, {QStringLiteral("enabled"), item.enabled}};
  if (item.checked) {
    result.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
    result.insert(QStringLiteral("toggle-state"), *item.checked ? 1 : 0);
  }
  if (!item.shortcut.isEmpty()) {
    result.insert(QStringLiteral("shortcut"), QVariant::fromValue(shortcutOf(item.shortcut)));
  }
  if (!item.submenu.empty()) result.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
  return result;
}

QVariantMap MenuExporter::propertiesOf(int id) const {
  if (id == 0) return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
  const Entry* entry = find(id);
  return entry ? describe(*entry->item) : QVariantMap();
}

// A negative depth means all the way down.
MenuNode MenuExporter::node(int id, int depth) const {
  MenuNode result{id, propertiesOf(id), {}};
  if (depth == 0) return result;
  const Entry* entry = find(id);
  const std::vector<int> none;
  for (const int child : id == 0 ? top_ : (entry ? entry->children : none)) {
    result.children.push_back(node(child, depth - 1));
  }
  return result;
}

QVariantMap MenuExporter::properties() const {
  return {{QStringLiteral("Version"), protocolVersion},
          {QStringLiteral("TextDirection"), QStringLiteral("ltr")},
          {QStringLiteral("Status"), QStringLiteral("normal")},
          {QStringLiteral("IconThemePath"), QStringList()}};
}

QVariantList MenuExporter::layout(const QVariantList& arguments) const {
  return {revision_, QVariant::fromValue(node(arguments.value(0).toInt(), arguments.value(1, -1).toInt()))};
}

QVariantList MenuExporter::groupProperties(const QVariantList& arguments) const {
  auto ids = qdbus_cast<QList<int>>(arguments.value(0));
  if (ids.isEmpty()) {
    for (std::size_t i = 0; i < entries_.size(); ++i) ids.push_back(firstId_ + static_cast<int>(i));
  }
  QList<MenuProperties> found;
  for (const int id : ids) {
    if (id == 0 || find(id)) found.push_back({id, propertiesOf(id)});
  }
  return {QVariant::fromValue(found)};
}

// The action may take the menu away, so it waits for its turn.
bool MenuExporter::happened(int id, const QString& event) {
  const Entry* entry = find(id);
  if (!entry) return id == 0;
  const desktop::MenuItem& item = *entry->item;
  if (event == QLatin1String("clicked") && item.enabled && item.action) {
    dispatch::MainQueue::shared().async(item.action);
  }
  return true;
}

bool MenuExporter::aboutToShow() {
  const uint before = revision_;
  if (willOpen) willOpen();
  return revision_ != before;
}

std::optional<QVariantList> MenuExporter::call(const QString& method, const QVariantList& arguments) {
  if (method == QLatin1String("GetLayout")) return layout(arguments);
  if (method == QLatin1String("GetGroupProperties")) return groupProperties(arguments);
  if (method == QLatin1String("GetProperty")) {
    const QVariant value = propertiesOf(arguments.value(0).toInt()).value(arguments.value(1).toString());
    return QVariantList{QVariant::fromValue(QDBusVariant(value.isValid() ? value : QVariant(QString())))};
  }
  if (method == QLatin1String("Event")) {
    happened(arguments.value(0).toInt(), arguments.value(1).toString());
    return QVariantList();
  }
  if (method == QLatin1String("EventGroup")) {
    QList<int> unknown;
    for (const MenuEvent& event : qdbus_cast<QList<MenuEvent>>(arguments.value(0))) {
      if (!happened(event.id, event.name)) unknown.push_back(event.id);
    }
    return QVariantList{QVariant::fromValue(unknown)};
  }
  if (method == QLatin1String("AboutToShow")) {
    return QVariantList{arguments.value(0).toInt() == 0 && aboutToShow()};
  }
  if (method == QLatin1String("AboutToShowGroup")) {
    const bool changed = qdbus_cast<QList<int>>(arguments.value(0)).contains(0) && aboutToShow();
    return QVariantList{QVariant::fromValue(changed ? QList<int>{0} : QList<int>()), QVariant::fromValue(QList<int>())};
  }
  return std::nullopt;
}

}  // namespace velicor::tray
