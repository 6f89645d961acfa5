#pragma once

#include <QDBusMessage>
#include <QString>
#include <QVariantList>

#include "platform/x11/connection.h"

// What desktops show status items in: a host of items that are offered over the message bus, or, older, a tray that
// takes in windows. Main thread.
namespace velicor::tray {

// Takes the items over the bus, for whoever shows them.
inline const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
inline const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

// A call of the watcher, which is not started only to be asked.
QDBusMessage watcherCall(const QString& interface, const char* method, const QVariantList& arguments);

// Whether anybody shows the items: the question to the watcher, and what its answer says.
QDBusMessage questionForHost();
bool namesHost(const QDBusMessage& answer);

// Owned by the older kind of tray.
xcb_atom_t traySelection(x11::Connection& connection);

enum class StatusArea { none, itemsNobodyShows, items, windows };

// The one that the program's icon would go to. Asks the bus, and the server where there is one (else nullptr); waits
// for the answers, two seconds at most.
StatusArea findStatusArea(x11::Connection* server);

}  // namespace velicor::tray
