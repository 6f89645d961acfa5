#pragma once

#include <filesystem>
#include <string>

#include "platform/base/error.h"

namespace velicor::desktop {

// Hands addresses and files to the programs that the user has chosen for them. Success means that such a
// program was found and started; what becomes of it then is not known. Main thread.
class Opener {
 public:
  virtual ~Opener() = default;

  // Of any scheme: https, mailto, … Percent-encoded, as in a link.
  virtual Status openUrl(const std::string& url) = 0;

  virtual Status openFile(const std::filesystem::path& file) = 0;
};

// The desktop's own associations: the default applications of the user's and the system's lists.
Opener& systemOpener();

}  // namespace velicor::desktop
