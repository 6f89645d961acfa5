#pragma once

#include <string>

#include "platform/desktop/opener.h"

namespace velicor::desktop {

// Opens the settings in which the user allows programs to read the screen: those at `url`, or where nothing handles
// it, the privacy or, for want of one, the main settings of the desktop that runs. Fails where there are none.
Status openPrivacySettings(Opener& opener, const std::string& url);

}  // namespace velicor::desktop
