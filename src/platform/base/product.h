#pragma once

#include <string_view>

// The product's own names and addresses. Nothing else in the sources spells them out.
namespace velicor::product {

inline constexpr std::string_view name = "Velicor";

// Identifier of the application, by which the desktop and lists of applications know it.
inline constexpr std::string_view identifier = "example.velicor.Velicor";

// The product's web site; everything on it is reached over HTTPS.
inline constexpr std::string_view siteHost = "velicor.example";

// "major.minor.patch" and the build number, both from the CMake project.
std::string_view version();
std::string_view build();

}  // namespace velicor::product
