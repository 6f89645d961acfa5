#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "platform/screencapture/x11/capture_memory.h"
#include "platform/screencapture/x11/damage_watch.h"
#include "platform/screencapture/x11/scene_plan.h"
#include "platform/screencapture/x11/visual_formats.h"
#include "platform/x11/connection.h"

namespace velicor::screencapture {

// The server's side of one stream: watches the windows of its scene for drawing, and composes them. Keeps
// what it has composed, so that only what was drawn since has to be composed and fetched again. Used on the
// capture thread only.
class SceneRenderer {
 public:
  // Both outlive it.
  SceneRenderer(x11::Connection& connection, const VisualFormats& formats);
  ~SceneRenderer();
  SceneRenderer(const SceneRenderer&) = delete;
  SceneRenderer& operator=(const SceneRenderer&) = delete;

  // Draws this plan from now on, and watches its windows and no others.
  void follow(ScenePlan plan);
  const ScenePlan& plan() const { return plan_; }

  // Takes note of damage, and of windows that are gone; true when one of ours was drawn into.
  bool take(const xcb_generic_event_t& event);

  // Takes note of an error, from the connection's error handler; true when it was a naming of ours.
  bool take(const xcb_generic_error_t& error);

  // Whether the last drawing is still what the plan shows, as far as events have told. Waits for nothing.
  bool isCurrent();

  // Whether something was drawn inside the plan's frame since the last drawing. A round trip only where a
  // window was drawn into on both sides of the frame's edge.
  bool drawnInside();

  struct Drawing {
    bool done = false;         // false: nothing came of it
    bool isWhole = false;      // all of it was drawn
    bool isLacking = false;    // a window was gone before its contents could be had: the plan is too old
    bool drawnInside = false;  // as above, until just before this drawing
    Rows changed;              // outside these it is like the drawing before it
  };

  // Brings the segment, rows tightly packed, up to date. One round trip, as a rule. Windows whose contents
  // can't be had are left out, and what the plan has beneath them shows. Those that are gone have told so by
  // events that have been read by then; of one that is refused twice in a row nothing better will come.
  Drawing draw(const Segment& segment);

  // The next drawing keeps nothing of the one before.
  void drawAnew() { isDrawn_ = false; }

  // Windows whose contents the server refused, although they should be there, since the last call.
  std::vector<WindowId> takeRefused();

 private:
  // What the server keeps for us about one window.
  struct Surface {
    std::uint32_t pixmap = 0;
    std::uint32_t picture = 0;
    unsigned pixmapGeneration = 0;
    std::uint32_t shape = 0;
    unsigned shapeGeneration = 0;
    std::optional<ClientCut> cut;
  };

  // A part of the frame, relative to its corner, that has to be drawn, and the rows to be fetched then.
  struct Task {
    DeviceRect area;
    Rows rows;
  };

  DeviceRect wholeFrame() const { return {0, 0, plan_.frame.width, plan_.frame.height}; }
  DeviceRect onScreen(const DeviceRect& area) const {
    return area.translatedBy(plan_.frame.x, plan_.frame.y);
  }

  void forget(WindowId id);
  void prepare(const Layer& layer);
  void name(Surface& surface, const Layer& layer);
  void loseUnnamed();
  void readShape(Surface& surface, const Layer& layer);
  void subtract(std::uint32_t region, const ClientCut& cut);
  void makePicture(Surface& surface, const Layer& layer);
  void release(Surface& surface);
  void releaseContents(Surface& surface);
  void releaseCanvas();

  bool canCopy() const;
  bool copyDirectly(const Task& task, const Segment& segment);
  bool compose(const Task& task, const Segment& segment);
  void ensureCanvas();
  void paintArea(const DeviceRect& area);
  bool hides(const Layer& layer, const DeviceRect& place) const;
  std::vector<Layer>::const_iterator lowestNeeded(const DeviceRect& place) const;
  void paintBackdrop(const DeviceRect& area);
  void paintTiles(const DeviceRect& place);
  void paint(const Layer& layer, const Surface& surface, const DeviceRect& part);
  bool fetch(xcb_drawable_t drawable, DevicePoint corner, const Rows& rows, const Segment& segment);

  x11::Connection& connection_;
  const VisualFormats& formats_;
  ScenePlan plan_;
  DamageWatch damage_;
  std::map<WindowId, Surface> surfaces_;
  std::map<std::uint32_t, WindowId> namings_;  // windows by the sequence number of their naming
  std::set<WindowId> refused_;
  std::set<WindowId> lost_;  // could not be named for the last drawing
  bool isDrawn_ = false;  // the plan has been drawn once, and nothing was lost since
  std::uint32_t canvas_ = 0;
  std::uint32_t canvasPicture_ = 0;
  int canvasWidth_ = 0;
  int canvasHeight_ = 0;
  bool canvasShows_ = false;   // all that the last drawing has
  DeviceRect written_;         // what the last fetch and composition replaced
  std::uint32_t fetched_ = 0;  // the request that fetched last
  // Regions to work with, for cuts.
  std::uint32_t parts_ = 0;
  std::uint32_t inside_ = 0;
};

}  // namespace velicor::screencapture
