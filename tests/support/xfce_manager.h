#pragma once

#include <memory>
#include <string>

#include "support/x_server.h"

namespace velicor::test {

// The window manager xfwm4 with the message bus that it doesn't start without, and nothing of the session
// around us: both get a folder of their own that goes with this object.
class XfceManager {
 public:
  enum class Way { plain, instead, composing, composingInstead };

  // Composing: with its own compositing manager. Instead: in place of the manager that runs. Returns when it
  // does its work; instead of another, possibly before.
  XfceManager(const XServer& server, Way way);

 private:
  struct Folder {
    Folder();
    ~Folder();
    std::string path;
  };

  Folder folder_;
  Program bus_;
  std::unique_ptr<WindowManager> manager_;
};

}  // namespace velicor::test
