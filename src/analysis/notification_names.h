#pragma once

#include "platform/notifications/notification_center.h"

// In-process notifications that announce new results of the analysis. Posted on the main thread, without an
// object.
namespace velicor {

// A preview was published, or taken away.
inline constexpr notifications::Name velicorPreviewReady{"VelicorPreviewReady"};

// A pair of scope images was published, or taken away.
inline constexpr notifications::Name velicorScopesReady{"VelicorScopesReady"};

}  // namespace velicor
