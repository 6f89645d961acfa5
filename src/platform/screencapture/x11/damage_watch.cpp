#include "platform/screencapture/x11/damage_watch.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace velicor::screencapture {

namespace {

// Sequence numbers wrap around.
bool isBefore(std::uint32_t one, std::uint32_t other) { return static_cast<std::int32_t>(one - other) < 0; }

DeviceRect rectOf(const xcb_rectangle_t& area) { return {area.x, area.y, area.width, area.height}; }

// Windows' own coordinates count from the inner corner of the border.
DevicePoint innerCorner(const Layer& layer) {
  return {layer.bounds.x + layer.border, layer.bounds.y + layer.border};
}

DeviceRect inWindow(const Layer& layer) {
  const DevicePoint corner = innerCorner(layer);
  return layer.visible.translatedBy(-corner.x, -corner.y);
}

DeviceRect inFrame(const ScenePlan& plan, const Layer& layer, const DeviceRect& part) {
  if (part.isEmpty()) return {};
  const DevicePoint corner = innerCorner(layer);
  return part.translatedBy(corner.x - plan.frame.x, corner.y - plan.frame.y);
}

const Layer* layerOf(const ScenePlan& plan, WindowId id) {
  const auto place = std::find_if(plan.layers.begin(), plan.layers.end(),
                                  [id](const Layer& layer) { return layer.id == id; });
  return place == plan.layers.end() ? nullptr : &*place;
}

}  // namespace

DeviceRect united(const DeviceRect& one, const DeviceRect& other) {
  if (one.isEmpty()) return other;
  if (other.isEmpty()) return one;
  const int left = std::min(one.x, other.x);
  const int top = std::min(one.y, other.y);
  return {left, top, std::max(one.right(), other.right()) - left,
          std::max(one.bottom(), other.bottom()) - top};
}

DamageWatch::DamageWatch(x11::Connection& connection)
    : connection_(connection),
      parts_(connection.newId()),
      inside_(connection.newId()),
      collected_(connection.newId()) {
  for (const std::uint32_t region : {parts_, inside_, collected_})
    xcb_xfixes_create_region(connection.raw(), region, 0, nullptr);
}

DamageWatch::~DamageWatch() {
  for (const auto& [id, window] : windows_)
    xcb_damage_destroy(connection_.raw(), window.damage);
  for (const std::uint32_t region : {parts_, inside_, collected_})
    xcb_xfixes_destroy_region(connection_.raw(), region);
}

void DamageWatch::follow(const ScenePlan& plan) {
  std::erase_if(windows_, [&](const auto& entry) {
    const bool unwanted = !layerOf(plan, entry.first);
    if (unwanted) xcb_damage_destroy(connection_.raw(), entry.second.damage);
    return unwanted;
  });
  for (const Layer& layer : plan.layers) {
    Watched& window = windows_[layer.id];
    if (window.damage != 0) continue;
    window.damage = connection_.newId();
    xcb_damage_create(connection_.raw(), window.damage, layer.id, XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX);
    // It starts with the whole window, which is drawn anyway.
    takeOff(window, XCB_NONE);
  }
}

const xcb_damage_notify_event_t* DamageWatch::damageOf(const xcb_generic_event_t& event) const {
  const bool isDamage =
      x11::eventType(event) == connection_.extensions().damage.firstEvent + XCB_DAMAGE_NOTIFY;
  return isDamage ? reinterpret_cast<const xcb_damage_notify_event_t*>(&event) : nullptr;
}

DamageWatch::Watched* DamageWatch::find(const xcb_damage_notify_event_t& notify) {
  const auto entry = windows_.find(notify.drawable);
  return entry != windows_.end() && entry->second.damage == notify.damage ? &entry->second : nullptr;
}

bool DamageWatch::take(const xcb_generic_event_t& event) {
  const xcb_damage_notify_event_t* notify = damageOf(event);
  Watched* window = notify ? find(*notify) : nullptr;
  if (!window) return false;
  const bool isLate = isBefore(event.full_sequence, window->takenOff);
  // What was captured since then has it.
  if (isLate && isBefore(window->takenOff, captured_)) return false;
  DeviceRect& part = isLate ? window->late : window->drawn;
  part = united(part, rectOf(notify->area));
  return true;
}

void DamageWatch::takeOff(const ScenePlan& plan) {
  for (const Layer& layer : plan.layers) {
    const auto entry = windows_.find(layer.id);
    if (entry == windows_.end()) continue;
    Watched& window = entry->second;
    const DeviceRect visible = inWindow(layer);
    sure_ = united(sure_, inFrame(plan, layer, std::exchange(window.late, {}).intersection(visible)));
    if (window.drawn.isEmpty()) continue;
    const DeviceRect inside = window.drawn.intersection(visible);
    // The rectangle's sides are drawn at, what is in between need not be.
    const bool unsure = !inside.isEmpty() && !(inside == window.drawn);
    takeOff(window, unsure ? parts_ : XCB_NONE);
    if (unsure) collect(parts_, visible);
    DeviceRect& part = unsure ? unsure_ : sure_;
    part = united(part, inFrame(plan, layer, inside));
  }
}

void DamageWatch::takeOff(Watched& window, std::uint32_t parts) {
  window.takenOff = xcb_damage_subtract(connection_.raw(), window.damage, XCB_NONE, parts).sequence;
  window.drawn = {};
}

void DamageWatch::collect(std::uint32_t parts, const DeviceRect& inside) {
  xcb_connection_t* const c = connection_.raw();
  const xcb_rectangle_t rectangle{static_cast<std::int16_t>(inside.x), static_cast<std::int16_t>(inside.y),
                                  static_cast<std::uint16_t>(inside.width),
                                  static_cast<std::uint16_t>(inside.height)};
  xcb_xfixes_set_region(c, inside_, 1, &rectangle);
  xcb_xfixes_intersect_region(c, parts, inside_, inside_);
  // Windows have coordinates of their own, but whether there is anything at all does not depend on them.
  xcb_xfixes_union_region(c, inside_, collected_, collected_);
}

DamageWatch::Drawn DamageWatch::drawn() const {
  if (!sure_.isEmpty()) return Drawn::yes;
  return unsure_.isEmpty() ? Drawn::no : Drawn::perhaps;
}

void DamageWatch::ask() {
  if (drawn() != Drawn::perhaps || question_) return;
  question_ = xcb_xfixes_fetch_region(connection_.raw(), collected_);
}

void DamageWatch::hear() {
  if (!question_) return;
  const auto reply =
      connection_.reply(xcb_xfixes_fetch_region_reply, *std::exchange(question_, std::nullopt));
  const bool any = reply && (*reply)->extents.width > 0 && (*reply)->extents.height > 0;
  if (any) {
    sure_ = united(sure_, unsure_);
    return;
  }
  unsure_ = {};
}

void DamageWatch::captured(std::uint32_t sequence) {
  captured_ = sequence;
  if (!unsure_.isEmpty()) xcb_xfixes_set_region(connection_.raw(), collected_, 0, nullptr);
  sure_ = {};
  unsure_ = {};
}

bool DamageWatch::isTorn(const ScenePlan& plan, const DeviceRect& written, std::uint32_t sequence) {
  bool torn = false;
  connection_.peekEvents([&](const xcb_generic_event_t& event) {
    const xcb_damage_notify_event_t* notify = damageOf(event);
    const Watched* window = notify ? find(*notify) : nullptr;
    const Layer* layer = window ? layerOf(plan, notify->drawable) : nullptr;
    if (!layer || !isBefore(event.full_sequence, sequence)) return;
    const DeviceRect part = inFrame(plan, *layer, rectOf(notify->area).intersection(inWindow(*layer)));
    if (part.isEmpty()) return;
    const bool isTakenOff = isBefore(event.full_sequence, window->takenOff);
    if (isTakenOff) sure_ = united(sure_, part);
    torn = torn || (!written.contains(part) && (isTakenOff || written.intersects(part)));
  });
  return torn;
}

}  // namespace velicor::screencapture
