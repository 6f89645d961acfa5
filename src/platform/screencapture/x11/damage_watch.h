#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include "platform/screencapture/x11/scene_plan.h"
#include "platform/x11/connection.h"

namespace velicor::screencapture {

// The smallest rectangle around both; an empty one takes no room.
DeviceRect united(const DeviceRect& one, const DeviceRect& other);

// Which part of a scene was drawn into since it was last captured. The server reports, for each window, the
// rectangle around all that was drawn since the damage was last taken off, whenever that grows; most
// questions are answered by these alone. Used on the capture thread only.
//
// Damage is taken off before contents are read: what is drawn in between is reported again, never lost. Parts
// are relative to the frame's corner.
class DamageWatch {
 public:
  // `connection` outlives it.
  explicit DamageWatch(x11::Connection& connection);
  ~DamageWatch();
  DamageWatch(const DamageWatch&) = delete;
  DamageWatch& operator=(const DamageWatch&) = delete;

  // The windows of the plan are watched from now on, no others.
  void follow(const ScenePlan& plan);

  // The server took the damage object along with the window; its identifier may soon be another window's.
  void forget(WindowId id) { windows_.erase(id); }

  // Takes note of damage; true when it is new and one of ours.
  bool take(const xcb_generic_event_t& event);

  // Takes off all damage that is known, without waiting for the server.
  void takeOff(const ScenePlan& plan);

  // What was taken off since captured(): nothing inside the frame; something that is only known to lie in a
  // rectangle that reaches into the frame; something inside.
  enum class Drawn { no, perhaps, yes };
  Drawn drawn() const;

  // Around all of it.
  DeviceRect part() const { return united(sure_, unsure_); }

  // Turns `perhaps` into an answer: ask() sends the question, hear() waits. Neither does anything where
  // nothing is unsure.
  void ask();
  void hear();

  // Everything that was taken off has been captured since, by this request.
  void captured(std::uint32_t sequence);

  // After a capture that wrote `written` and was over with this request: whether what was drawn meanwhile
  // left it torn, partly older and partly newer. Looks at events only that the capture's reply brought along,
  // and counts what had been drawn before the damage was taken off as drawn().
  bool isTorn(const ScenePlan& plan, const DeviceRect& written, std::uint32_t sequence);

 private:
  struct Watched {
    std::uint32_t damage = 0;
    std::uint32_t takenOff = 0;  // the request that last took damage off
    DeviceRect drawn;            // since then, in the window's own coordinates
    DeviceRect late;             // just before it, unseen: the server no longer has it
  };

  const xcb_damage_notify_event_t* damageOf(const xcb_generic_event_t& event) const;
  Watched* find(const xcb_damage_notify_event_t& notify);
  void takeOff(Watched& window, std::uint32_t parts);
  void collect(std::uint32_t parts, const DeviceRect& inside);

  x11::Connection& connection_;
  std::map<WindowId, Watched> windows_;
  std::uint32_t captured_ = 0;  // the last request that captured
  DeviceRect sure_;
  DeviceRect unsure_;
  std::optional<xcb_xfixes_fetch_region_cookie_t> question_;
  // On the server: one window's damage, its part of the frame, and what all unsure windows have there.
  std::uint32_t parts_ = 0;
  std::uint32_t inside_ = 0;
  std::uint32_t collected_ = 0;
};

}  // namespace velicor::screencapture
