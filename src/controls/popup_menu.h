#pragma once

#include <QPoint>

#include "platform/desktop/menu.h"

class QMenu;

namespace velicor::desktop {
class Desktop;
}

namespace velicor::controls {

// Which corner of the menu goes to the place given; it stays on the screen whatever is asked for.
enum class MenuCorner { topLeft, topRight };

// Opens a menu in our look and returns at once; the menu goes when the user is done with it. The action of the
// chosen item runs on a later turn of the event loop. The result lives until then. Main thread.
QMenu* popUp(desktop::Desktop& desktop, const desktop::Menu& menu, QPoint place,
             MenuCorner corner = MenuCorner::topLeft);

}  // namespace velicor::controls
