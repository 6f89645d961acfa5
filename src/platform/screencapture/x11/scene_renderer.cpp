#include "platform/screencapture/x11/scene_renderer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/render.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>

namespace velicor::screencapture {

namespace {

constexpr std::uint32_t allPlanes = 0xffffffff;
constexpr xcb_render_color_t black{0, 0, 0, 0xffff};

std::int16_t s16(int value) { return static_cast<std::int16_t>(value); }
std::uint16_t u16(int value) { return static_cast<std::uint16_t>(value); }

xcb_rectangle_t rectangle(const DeviceRect& rect) {
  return {s16(rect.x), s16(rect.y), u16(rect.width), u16(rect.height)};
}

// Windows' own coordinates count from the inner corner of the border, their pixmaps' from the outer one.
DeviceRect inWindow(const Layer& layer, const DeviceRect& rect) {
  return rect.translatedBy(-layer.bounds.x - layer.border, -layer.bounds.y - layer.border);
}

}  // namespace

SceneRenderer::SceneRenderer(x11::Connection& connection, const VisualFormats& formats)
    : connection_(connection), formats_(formats), parts_(connection.newId()), inside_(connection.newId()) {
  xcb_xfixes_create_region(connection.raw(), parts_, 0, nullptr);
  xcb_xfixes_create_region(connection.raw(), inside_, 0, nullptr);
}

SceneRenderer::~SceneRenderer() {
  for (auto& [id, surface] : surfaces_)
    release(surface);
  releaseCanvas();
  xcb_xfixes_destroy_region(connection_.raw(), parts_);
  xcb_xfixes_destroy_region(connection_.raw(), inside_);
}

void SceneRenderer::follow(const ScenePlan& plan) {
  std::set<WindowId> wanted;
  for (const Layer& layer : plan.layers)
    wanted.insert(layer.id);
  for (auto entry = surfaces_.begin(); entry != surfaces_.end();) {
    if (wanted.contains(entry->first)) {
      ++entry;
      continue;
    }
    release(entry->second);
    entry = surfaces_.erase(entry);
  }
  for (const WindowId id : wanted) {
    Surface& surface = surfaces_[id];
    if (surface.damage != 0) continue;
    surface.damage = connection_.newId();
    xcb_damage_create(connection_.raw(), surface.damage, id, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    // It starts with the whole window, which is drawn anyway.
    xcb_damage_subtract(connection_.raw(), surface.damage, XCB_NONE, XCB_NONE);
  }
}

bool SceneRenderer::take(const xcb_generic_event_t& event) {
  if (x11::eventType(event) == XCB_DESTROY_NOTIFY) {
    forget(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
    return false;
  }
  if (x11::eventType(event) != connection_.extensions().damage.firstEvent + XCB_DAMAGE_NOTIFY) return false;
  const auto& notify = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
  const auto entry = surfaces_.find(notify.drawable);
  if (entry == surfaces_.end() || entry->second.damage != notify.damage) return false;
  entry->second.damaged = true;
  return true;
}

bool SceneRenderer::take(const xcb_generic_error_t& error) {
  const auto naming = namings_.find(error.full_sequence);
  if (naming == namings_.end()) return false;
  const auto entry = surfaces_.find(naming->second);
  if (entry != surfaces_.end()) {
    // The picture was never made either: nothing to free, and the next frame names again.
    entry->second.pixmap = 0;
    entry->second.picture = 0;
    entry->second.pixmapGeneration = 0;
  }
  if (error.error_code == XCB_MATCH) refused_.insert(naming->second);
  return true;
}

// The server took the damage object along with the window; its identifier may soon be another window's.
void SceneRenderer::forget(WindowId id) {
  const auto entry = surfaces_.find(id);
  if (entry == surfaces_.end()) return;
  entry->second.damage = 0;
  release(entry->second);
  surfaces_.erase(entry);
}

bool SceneRenderer::drawnInside(const ScenePlan& plan) { return anyDrawn(askDrawn(plan)); }

// Damage is taken off before the contents are read: what is drawn in between is told again, never lost.
SceneRenderer::RegionCookies SceneRenderer::askDrawn(const ScenePlan& plan) {
  RegionCookies cookies;
  for (const Layer& layer : plan.layers) {
    const auto entry = surfaces_.find(layer.id);
    if (entry == surfaces_.end() || !std::exchange(entry->second.damaged, false)) continue;
    const xcb_rectangle_t inside = rectangle(inWindow(layer, layer.visible));
    xcb_damage_subtract(connection_.raw(), entry->second.damage, XCB_NONE, parts_);
    xcb_xfixes_set_region(connection_.raw(), inside_, 1, &inside);
    xcb_xfixes_intersect_region(connection_.raw(), parts_, inside_, parts_);
    cookies.push_back(xcb_xfixes_fetch_region(connection_.raw(), parts_));
  }
  return cookies;
}

bool SceneRenderer::anyDrawn(const RegionCookies& cookies) {
  bool any = false;
  for (const auto cookie : cookies) {
    const auto reply = connection_.reply(xcb_xfixes_fetch_region_reply, cookie);
    any = any || (reply && (*reply)->extents.width > 0 && (*reply)->extents.height > 0);
  }
  return any;
}

SceneRenderer::Drawing SceneRenderer::draw(const ScenePlan& plan, const Segment& segment) {
  namings_.clear();
  const RegionCookies drawn = askDrawn(plan);
  for (const Layer& layer : plan.layers)
    prepare(layer);
  // The copy fails when the window has just gone; composing leaves it out.
  const bool done = (canCopy(plan) && copyDirectly(plan, segment)) || compose(plan, segment);
  return {done, anyDrawn(drawn)};
}

std::vector<WindowId> SceneRenderer::takeRefused() {
  const std::set<WindowId> refused = std::exchange(refused_, {});
  return {refused.begin(), refused.end()};
}

void SceneRenderer::prepare(const Layer& layer) {
  Surface& surface = surfaces_[layer.id];
  if (surface.pixmap == 0 || surface.pixmapGeneration != layer.pixmapGeneration) name(surface, layer);
  const bool sameShape = surface.shapeGeneration == layer.shapeGeneration && surface.cut == layer.cut;
  if (layer.shaped && (surface.shape == 0 || !sameShape)) readShape(surface, layer);
}

void SceneRenderer::readShape(Surface& surface, const Layer& layer) {
  if (surface.shape != 0) xcb_xfixes_destroy_region(connection_.raw(), surface.shape);
  surface.shape = connection_.newId();
  surface.shapeGeneration = layer.shapeGeneration;
  surface.cut = layer.cut;
  xcb_xfixes_create_region_from_window(connection_.raw(), surface.shape, layer.id, XCB_SHAPE_SK_BOUNDING);
  if (layer.cut) subtract(surface.shape, *layer.cut);
}

// What the client's place has that its shape has not. The client may be gone: then all of its place is kept.
void SceneRenderer::subtract(std::uint32_t region, const ClientCut& cut) {
  xcb_connection_t* const c = connection_.raw();
  const xcb_rectangle_t place = rectangle(cut.place);
  xcb_xfixes_set_region(c, inside_, 1, &place);
  xcb_xfixes_set_region(c, parts_, 0, nullptr);
  const std::uint32_t shape = connection_.newId();
  xcb_xfixes_create_region_from_window(c, shape, cut.client, XCB_SHAPE_SK_BOUNDING);
  xcb_xfixes_translate_region(c, shape, s16(cut.place.x), s16(cut.place.y));
  xcb_xfixes_subtract_region(c, inside_, shape, parts_);
  xcb_xfixes_subtract_region(c, region, parts_, region);
  xcb_xfixes_destroy_region(c, shape);
}

void SceneRenderer::name(Surface& surface, const Layer& layer) {
  releaseContents(surface);
  surface.pixmap = connection_.newId();
  surface.pixmapGeneration = layer.pixmapGeneration;
  namings_[xcb_composite_name_window_pixmap(connection_.raw(), layer.id, surface.pixmap).sequence] = layer.id;
}

void SceneRenderer::makePicture(Surface& surface, const Layer& layer) {
  if (surface.picture != 0 || surface.pixmap == 0) return;
  const VisualFormat* format = formats_.find(layer.visual);
  if (!format) return;
  surface.picture = connection_.newId();
  xcb_render_create_picture(connection_.raw(), surface.picture, surface.pixmap, format->pictureFormat, 0,
                            nullptr);
}

void SceneRenderer::release(Surface& surface) {
  releaseContents(surface);
  if (surface.shape != 0) xcb_xfixes_destroy_region(connection_.raw(), surface.shape);
  if (surface.damage != 0) xcb_damage_destroy(connection_.raw(), surface.damage);
}

void SceneRenderer::releaseContents(Surface& surface) {
  if (surface.picture != 0) xcb_render_free_picture(connection_.raw(), surface.picture);
  if (surface.pixmap != 0) xcb_free_pixmap(connection_.raw(), surface.pixmap);
  surface.picture = 0;
  surface.pixmap = 0;
}

void SceneRenderer::releaseCanvas() {
  if (canvas_ == 0) return;
  xcb_render_free_picture(connection_.raw(), canvasPicture_);
  xcb_free_pixmap(connection_.raw(), canvas_);
}

bool SceneRenderer::canCopy(const ScenePlan& plan) const {
  if (plan.layers.size() != 1 || !plan.covered || !(plan.screen == plan.frame)) return false;
  const VisualFormat* format = formats_.find(plan.layers.front().visual);
  return format && format->plainBgra;
}

bool SceneRenderer::copyDirectly(const ScenePlan& plan, const Segment& segment) {
  const Layer& layer = plan.layers.front();
  const DevicePoint corner{plan.frame.x - layer.bounds.x, plan.frame.y - layer.bounds.y};
  return fetch(surfaces_[layer.id].pixmap, corner, plan.frame, segment);
}

bool SceneRenderer::compose(const ScenePlan& plan, const Segment& segment) {
  ensureCanvas(plan.frame);
  xcb_xfixes_set_picture_clip_region(connection_.raw(), canvasPicture_, XCB_NONE, 0, 0);
  paintBackdrop(plan);
  for (const Layer& layer : plan.layers) {
    Surface& surface = surfaces_[layer.id];
    makePicture(surface, layer);
    if (surface.picture != 0) paint(plan, layer, surface);
  }
  return fetch(canvas_, {0, 0}, plan.frame, segment);
}

void SceneRenderer::ensureCanvas(const DeviceRect& frame) {
  if (canvas_ != 0 && canvasWidth_ == frame.width && canvasHeight_ == frame.height) return;
  releaseCanvas();
  canvas_ = connection_.newId();
  canvasPicture_ = connection_.newId();
  canvasWidth_ = frame.width;
  canvasHeight_ = frame.height;
  xcb_create_pixmap(connection_.raw(), 32, canvas_, connection_.root(), u16(frame.width), u16(frame.height));
  xcb_render_create_picture(connection_.raw(), canvasPicture_, canvas_, formats_.bgraPictureFormat(), 0,
                            nullptr);
}

void SceneRenderer::paintBackdrop(const ScenePlan& plan) {
  if (plan.covered && plan.screen == plan.frame) return;
  const xcb_rectangle_t all = rectangle({0, 0, plan.frame.width, plan.frame.height});
  xcb_render_fill_rectangles(connection_.raw(), XCB_RENDER_PICT_OP_SRC, canvasPicture_, black, 1, &all);
  if (!plan.covered && plan.background.pixmap != 0 && !plan.screen.isEmpty()) paintTiles(plan);
}

void SceneRenderer::paintTiles(const ScenePlan& plan) {
  const VisualFormat* format = formats_.find(connection_.screen().root_visual);
  const std::uint32_t tiles = connection_.newId();
  const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
  xcb_render_create_picture(connection_.raw(), tiles, plan.background.pixmap, format->pictureFormat,
                            XCB_RENDER_CP_REPEAT, &repeat);
  xcb_render_composite(connection_.raw(), XCB_RENDER_PICT_OP_SRC, tiles, XCB_NONE, canvasPicture_,
                       s16(plan.screen.x), s16(plan.screen.y), 0, 0, s16(plan.screen.x - plan.frame.x),
                       s16(plan.screen.y - plan.frame.y), u16(plan.screen.width), u16(plan.screen.height));
  xcb_render_free_picture(connection_.raw(), tiles);
}

void SceneRenderer::paint(const ScenePlan& plan, const Layer& layer, const Surface& surface) {
  xcb_connection_t* const c = connection_.raw();
  if (layer.shaped) {
    xcb_xfixes_set_picture_clip_region(c, canvasPicture_, surface.shape,
                                       s16(layer.bounds.x + layer.border - plan.frame.x),
                                       s16(layer.bounds.y + layer.border - plan.frame.y));
  }
  std::uint32_t mask = XCB_NONE;
  if (layer.opacity != fullyOpaque) {
    mask = connection_.newId();
    xcb_render_create_solid_fill(c, mask, {0, 0, 0, static_cast<std::uint16_t>(layer.opacity >> 16)});
  }
  const DeviceRect& part = layer.visible;
  xcb_render_composite(c, layer.blended ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, surface.picture,
                       mask, canvasPicture_, s16(part.x - layer.bounds.x), s16(part.y - layer.bounds.y), 0, 0,
                       s16(part.x - plan.frame.x), s16(part.y - plan.frame.y), u16(part.width),
                       u16(part.height));
  if (mask != XCB_NONE) xcb_render_free_picture(c, mask);
  if (layer.shaped) xcb_xfixes_set_picture_clip_region(c, canvasPicture_, XCB_NONE, 0, 0);
}

bool SceneRenderer::fetch(xcb_drawable_t drawable, DevicePoint corner, const DeviceRect& frame,
                          const Segment& segment) {
  xcb_connection_t* const c = connection_.raw();
  if (segment.serverId() != 0) {
    return connection_
        .reply(xcb_shm_get_image_reply, xcb_shm_get_image(c, drawable, s16(corner.x), s16(corner.y),
                                                          u16(frame.width), u16(frame.height), allPlanes,
                                                          XCB_IMAGE_FORMAT_Z_PIXMAP, segment.serverId(), 0))
        .has_value();
  }
  const auto image = connection_.reply(
      xcb_get_image_reply, xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, s16(corner.x), s16(corner.y),
                                         u16(frame.width), u16(frame.height), allPlanes));
  const auto size = static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 4;
  if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image->get())) < size) return false;
  std::memcpy(segment.bytes(), xcb_get_image_data(image->get()), size);
  return true;
}

}  // namespace velicor::screencapture
