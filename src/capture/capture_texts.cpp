#include "capture/capture_texts.h"

#include <string_view>

#include "platform/base/product.h"
#include "platform/screencapture/screen_capture.h"

namespace velicor::capturetexts {

namespace {

std::string withPathToTheSetting(std::string_view what) {
  return std::string(what) + "\nEnable " + std::string(product::name) +
         " in System Settings > Privacy & Security > Screen & System Audio Recording, then relaunch " +
         std::string(product::name) + ".";
}

}  // namespace

std::string permissionRequired() { return withPathToTheSetting("Screen Recording permission is required."); }

std::string messageFor(const Error& error) {
  if (error.domain == screencapture::errorDomain && error.code == screencapture::userDeclined) {
    return withPathToTheSetting("Screen Recording permission was declined.");
  }
  return "Capture failed: " + error.description;
}

std::string streamStopped(const Error& error) { return "Stream stopped: " + error.description; }

}  // namespace velicor::capturetexts
