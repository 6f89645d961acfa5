#pragma once

#include <string>
#include <string_view>

#include "platform/desktop/opener.h"

namespace velicor {

// A new message to the maker's support, in the user's mail program.
struct SupportMail {
  // Opens it. Where no program takes it, the log says so.
  static void compose(desktop::Opener& opener = desktop::systemOpener());

  // A mailto address with a subject, and a body that ends with a signature naming these two. Everything but
  // letters, digits and "-._~" is percent-encoded in both.
  static std::string address(std::string_view version, std::string_view operatingSystem);
};

}  // namespace velicor
