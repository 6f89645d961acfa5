#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include <xcb/xfixes.h>

#include "platform/screencapture/x11/capture_memory.h"
#include "platform/screencapture/x11/scene_plan.h"
#include "platform/screencapture/x11/visual_formats.h"
#include "platform/x11/connection.h"

namespace velicor::screencapture {

// The server's side of one stream: watches the windows of its scene for drawing, and composes them. Used on
// the capture thread only.
class SceneRenderer {
 public:
  // Both outlive it.
  SceneRenderer(x11::Connection& connection, const VisualFormats& formats);
  ~SceneRenderer();
  SceneRenderer(const SceneRenderer&) = delete;
  SceneRenderer& operator=(const SceneRenderer&) = delete;

  // The windows of the plan are watched from now on, no others.
  void follow(const ScenePlan& plan);

  // Takes note of damage, and of windows that are gone; true when one of ours was drawn into.
  bool take(const xcb_generic_event_t& event);

  // Takes note of an error, from the connection's error handler; true when it was a naming of ours.
  bool take(const xcb_generic_error_t& error);

  // Whether something was drawn inside the plan's frame since the last call or drawing. One round trip if
  // there was any damage at all, else none.
  bool drawnInside(const ScenePlan& plan);

  struct Drawing {
    bool done = false;         // false: nothing came of it
    bool drawnInside = false;  // as above, until just before this drawing
  };

  // Composes a plan that is followed into the segment, rows tightly packed. One round trip. Windows whose
  // contents can't be had are left out.
  Drawing draw(const ScenePlan& plan, const Segment& segment);

  // Windows whose contents the server refused, although they should be there, since the last call.
  std::vector<WindowId> takeRefused();

 private:
  // What the server keeps for us about one window.
  struct Surface {
    std::uint32_t damage = 0;
    bool damaged = false;
    std::uint32_t pixmap = 0;
    std::uint32_t picture = 0;
    unsigned pixmapGeneration = 0;
    std::uint32_t shape = 0;
    unsigned shapeGeneration = 0;
    std::optional<ClientCut> cut;
  };

  using RegionCookies = std::vector<xcb_xfixes_fetch_region_cookie_t>;
  RegionCookies askDrawn(const ScenePlan& plan);
  bool anyDrawn(const RegionCookies& cookies);

  void forget(WindowId id);
  void prepare(const Layer& layer);
  void name(Surface& surface, const Layer& layer);
  void readShape(Surface& surface, const Layer& layer);
  void subtract(std::uint32_t region, const ClientCut& cut);
  void makePicture(Surface& surface, const Layer& layer);
  void release(Surface& surface);
  void releaseContents(Surface& surface);
  void releaseCanvas();

  bool canCopy(const ScenePlan& plan) const;
  bool copyDirectly(const ScenePlan& plan, const Segment& segment);
  bool compose(const ScenePlan& plan, const Segment& segment);
  void ensureCanvas(const DeviceRect& frame);
  void paintBackdrop(const ScenePlan& plan);
  void paintTiles(const ScenePlan& plan);
  void paint(const ScenePlan& plan, const Layer& layer, const Surface& surface);
  bool fetch(xcb_drawable_t drawable, DevicePoint corner, const DeviceRect& frame, const Segment& segment);

  x11::Connection& connection_;
  const VisualFormats& formats_;
  std::map<WindowId, Surface> surfaces_;
  std::map<std::uint32_t, WindowId> namings_;  // windows by the sequence number of their naming
  std::set<WindowId> refused_;
  std::uint32_t canvas_ = 0;
  std::uint32_t canvasPicture_ = 0;
  int canvasWidth_ = 0;
  int canvasHeight_ = 0;
  // Regions to work with: what was drawn, and the frame as the window sees it; likewise for cuts.
  std::uint32_t parts_ = 0;
  std::uint32_t inside_ = 0;
};

}  // namespace velicor::screencapture
