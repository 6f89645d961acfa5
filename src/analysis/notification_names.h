#pragma once

#include <string_view>

// In-process notifications that announce new results of the analysis. Posted on the main thread, without an
// object.
namespace velicor {

// A preview was published, or taken away.
inline constexpr std::string_view velicorPreviewReady = "VelicorPreviewReady";

// A pair of scope images was published, or taken away.
inline constexpr std::string_view velicorScopesReady = "VelicorScopesReady";

}  // namespace velicor
