#include "platform/tray/notifier_item.h"

#include <QDBusObjectPath>

#include "platform/tray/menu_exporter.h"

namespace velicor::tray {

namespace {

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";

constexpr const char* itemDescription = R"xml(
<property name="Category" type="s" access="read"/>
<property name="Id" type="s" access="read"/>
<property name="Title" type="s" access="read"/>
<property name="Status" type="s" access="read"/>
<property name="WindowId" type="i" access="read"/>
<property name="IconName" type="s" access="read"/>
<property name="IconThemePath" type="s" access="read"/>
<property name="IconPixmap" type="a(iiay)" access="read"/>
<property name="OverlayIconName" type="s" access="read"/>
<property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
<property name="AttentionIconName" type="s" access="read"/>
<property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
<property name="AttentionMovieName" type="s" access="read"/>
<property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
<property name="ItemIsMenu" type="b" access="read"/>
<property name="Menu" type="o" access="read"/>
<method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="SecondaryActivate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="ContextMenu"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="Scroll"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
<signal name="NewIcon"/><signal name="NewTitle"/><signal name="NewToolTip"/>
<signal name="NewStatus"><arg type="s"/></signal>)xml";

}  // namespace

NotifierItem::NotifierItem(const QDBusConnection& bus, const QString& title, const TemplateIcon& icon)
    : BusObject(bus, path, itemInterface, itemDescription),
      title_(title),
      iconName_(installedName(icon)),
      pixmaps_(pixmapsOf(icon)) {
  registerBusTypes();
}

QVariantMap NotifierItem::properties() const {
  const QVariant noPixmaps = QVariant::fromValue(QList<IconPixmap>());
  return {{QStringLiteral("Category"), QStringLiteral("ApplicationStatus")},
          {QStringLiteral("Id"), title_.toLower()},
          {QStringLiteral("Title"), title_},
          {QStringLiteral("Status"), QStringLiteral("Active")},
          {QStringLiteral("WindowId"), 0},
          {QStringLiteral("IconName"), iconName_},
          {QStringLiteral("IconThemePath"), QString()},
          {QStringLiteral("IconPixmap"), QVariant::fromValue(pixmaps_)},
          {QStringLiteral("OverlayIconName"), QString()},
          {QStringLiteral("OverlayIconPixmap"), noPixmaps},
          {QStringLiteral("AttentionIconName"), QString()},
          {QStringLiteral("AttentionIconPixmap"), noPixmaps},
          {QStringLiteral("AttentionMovieName"), QString()},
          {QStringLiteral("ToolTip"), QVariant::fromValue(ToolTip{{}, {}, title_, {}})},
          {QStringLiteral("ItemIsMenu"), true},
          {QStringLiteral("Menu"), QVariant::fromValue(QDBusObjectPath(QLatin1String(MenuExporter::path)))}};
}

std::optional<QVariantList> NotifierItem::call(const QString& method, const QVariantList&) {
  const bool opens = method == QLatin1String("Activate") || method == QLatin1String("ContextMenu");
  if (opens && activated) activated();
  if (opens || method == QLatin1String("SecondaryActivate") || method == QLatin1String("Scroll")) {
    return QVariantList();
  }
  return std::nullopt;
}

}  // namespace velicor::tray
