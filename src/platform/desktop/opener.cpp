#include "platform/desktop/opener.h"

#include <memory>

#include <gio/gio.h>

namespace velicor::desktop {

namespace {

template <auto release>
struct Release {
  template <typename T>
  void operator()(T* pointer) const {
    release(pointer);
  }
};

tl::unexpected<Error> taken(GError* error) {
  const std::unique_ptr<GError, Release<g_error_free>> owned(error);
  return failure(g_quark_to_string(owned->domain), owned->code, owned->message);
}

class AssociatedPrograms : public Opener {
 public:
  Status openUrl(const std::string& url) override {
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri(url.c_str(), nullptr, &error)) return {};
    return taken(error);
  }

  Status openFile(const std::filesystem::path& file) override {
    GError* error = nullptr;
    const std::unique_ptr<gchar, Release<g_free>> url(g_filename_to_uri(file.c_str(), nullptr, &error));
    if (!url) return taken(error);
    return openUrl(url.get());
  }
};

}  // namespace

Opener& systemOpener() {
  static AssociatedPrograms instance;
  return instance;
}

}  // namespace velicor::desktop
