#include "platform/screencapture/x11/scene_renderer.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include <xcb/composite.h>
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

Rows rowsOf(const DeviceRect& area) { return area.isEmpty() ? Rows{} : Rows{area.y, area.bottom()}; }

}  // namespace

SceneRenderer::SceneRenderer(x11::Connection& connection, const VisualFormats& formats)
    : connection_(connection),
      formats_(formats),
      damage_(connection),
      parts_(connection.newId()),
      inside_(connection.newId()) {
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

void SceneRenderer::follow(ScenePlan plan) {
  plan_ = std::move(plan);
  isDrawn_ = false;
  damage_.follow(plan_);
  for (auto entry = surfaces_.begin(); entry != surfaces_.end();) {
    const bool wanted = std::any_of(plan_.layers.begin(), plan_.layers.end(),
                                    [&](const Layer& layer) { return layer.id == entry->first; });
    if (!wanted) release(entry->second);
    entry = wanted ? std::next(entry) : surfaces_.erase(entry);
  }
}

bool SceneRenderer::take(const xcb_generic_event_t& event) {
  if (x11::eventType(event) != XCB_DESTROY_NOTIFY) return damage_.take(event);
  forget(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
  return false;
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
  isDrawn_ = false;
  if (error.error_code == XCB_MATCH) refused_.insert(naming->second);
  return true;
}

// A reply that comes after the namings has brought their errors along.
void SceneRenderer::loseUnnamed() {
  if (namings_.empty()) return;
  connection_.peekErrors([this](const xcb_generic_error_t& error) {
    if (take(error)) lost_.insert(namings_.at(error.full_sequence));
  });
}

void SceneRenderer::forget(WindowId id) {
  damage_.forget(id);
  const auto entry = surfaces_.find(id);
  if (entry == surfaces_.end()) return;
  release(entry->second);
  surfaces_.erase(entry);
}

bool SceneRenderer::isCurrent() {
  damage_.takeOff(plan_);
  return isDrawn_ && damage_.drawn() == DamageWatch::Drawn::no;
}

bool SceneRenderer::drawnInside() {
  if (isCurrent()) return false;
  damage_.ask();
  damage_.hear();
  return !isDrawn_ || damage_.drawn() == DamageWatch::Drawn::yes;
}

SceneRenderer::Drawing SceneRenderer::draw(const Segment& segment) {
  namings_.clear();
  damage_.takeOff(plan_);
  const bool anew = !std::exchange(isDrawn_, true);
  if (anew) canvasShows_ = false;
  for (const Layer& layer : plan_.layers)
    prepare(layer);
  const Task everything{wholeFrame(), rowsOf(wholeFrame())};
  const DeviceRect area = anew ? everything.area : damage_.part();
  Task task{area, rowsOf(area).united(segment.outdated()).within(everything.rows)};
  bool done = canCopy() ? copyDirectly(task, segment) : compose(task, segment);
  const std::set<WindowId> lostBefore = std::exchange(lost_, {});
  loseUnnamed();
  if (!done || !lost_.empty() || damage_.isTorn(plan_, written_, fetched_)) {
    // What a window that has just gone was to hide is in no copy, and in no canvas. What is composed at once
    // is never torn.
    canvasShows_ = false;
    task = everything;
    done = compose(task, segment);
  }
  damage_.hear();
  const bool lacking = !std::includes(lostBefore.begin(), lostBefore.end(), lost_.begin(), lost_.end());
  const Drawing drawing{done, task.area == everything.area, lacking,
                        damage_.drawn() == DamageWatch::Drawn::yes,
                        rowsOf(united(task.area, damage_.part()))};
  // Of a failure nobody knows what has been lost.
  isDrawn_ = done && lost_.empty();
  if (isDrawn_) damage_.captured(fetched_);
  return drawing;
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

bool SceneRenderer::canCopy() const {
  if (plan_.layers.size() != 1 || !plan_.covered || !(plan_.screen == plan_.frame)) return false;
  const VisualFormat* format = formats_.find(plan_.layers.front().visual);
  return format && format->plainBgra;
}

bool SceneRenderer::copyDirectly(const Task& task, const Segment& segment) {
  const Layer& layer = plan_.layers.front();
  const DevicePoint corner{plan_.frame.x - layer.bounds.x, plan_.frame.y - layer.bounds.y};
  canvasShows_ = false;
  written_ = {0, task.rows.top, plan_.frame.width, task.rows.bottom - task.rows.top};
  return fetch(surfaces_[layer.id].pixmap, corner, task.rows, segment);
}

bool SceneRenderer::compose(const Task& task, const Segment& segment) {
  ensureCanvas();
  written_ = canvasShows_ ? task.area : wholeFrame();
  paintArea(written_);
  canvasShows_ = fetch(canvas_, {0, 0}, task.rows, segment);
  return canvasShows_;
}

void SceneRenderer::ensureCanvas() {
  const DeviceRect& frame = plan_.frame;
  if (canvas_ != 0 && canvasWidth_ == frame.width && canvasHeight_ == frame.height) return;
  releaseCanvas();
  canvas_ = connection_.newId();
  canvasPicture_ = connection_.newId();
  canvasWidth_ = frame.width;
  canvasHeight_ = frame.height;
  canvasShows_ = false;
  xcb_create_pixmap(connection_.raw(), 32, canvas_, connection_.root(), u16(frame.width), u16(frame.height));
  xcb_render_create_picture(connection_.raw(), canvasPicture_, canvas_, formats_.bgraPictureFormat(), 0,
                            nullptr);
}

void SceneRenderer::paintArea(const DeviceRect& area) {
  if (area.isEmpty()) return;
  const DeviceRect place = onScreen(area);
  auto layer = lowestNeeded(place);
  if (layer == plan_.layers.end()) {
    paintBackdrop(area);
    layer = plan_.layers.begin();
  }
  for (; layer != plan_.layers.end(); ++layer) {
    const DeviceRect part = layer->visible.intersection(place);
    if (part.isEmpty()) continue;
    Surface& surface = surfaces_[layer->id];
    makePicture(surface, *layer);
    if (surface.picture != 0) paint(*layer, surface, part);
  }
}

bool SceneRenderer::hides(const Layer& layer, const DeviceRect& place) const {
  if (!layer.solid.contains(place) || !formats_.find(layer.visual)) return false;
  const auto surface = surfaces_.find(layer.id);
  return surface != surfaces_.end() && surface->second.pixmap != 0;
}

// The topmost layer that hides all beneath it at this place; the end where none does.
std::vector<Layer>::const_iterator SceneRenderer::lowestNeeded(const DeviceRect& place) const {
  const auto found = std::find_if(plan_.layers.rbegin(), plan_.layers.rend(),
                                  [&](const Layer& layer) { return hides(layer, place); });
  return found == plan_.layers.rend() ? plan_.layers.end() : std::prev(found.base());
}

void SceneRenderer::paintBackdrop(const DeviceRect& area) {
  const DeviceRect place = plan_.screen.intersection(onScreen(area));
  const xcb_rectangle_t all = rectangle(area);
  xcb_render_fill_rectangles(connection_.raw(), XCB_RENDER_PICT_OP_SRC, canvasPicture_, black, 1, &all);
  if (!plan_.covered && plan_.background.pixmap != 0 && !place.isEmpty()) paintTiles(place);
}

void SceneRenderer::paintTiles(const DeviceRect& place) {
  const VisualFormat* format = formats_.find(connection_.screen().root_visual);
  const std::uint32_t tiles = connection_.newId();
  const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
  xcb_render_create_picture(connection_.raw(), tiles, plan_.background.pixmap, format->pictureFormat,
                            XCB_RENDER_CP_REPEAT, &repeat);
  xcb_render_composite(connection_.raw(), XCB_RENDER_PICT_OP_SRC, tiles, XCB_NONE, canvasPicture_,
                       s16(place.x), s16(place.y), 0, 0, s16(place.x - plan_.frame.x),
                       s16(place.y - plan_.frame.y), u16(place.width), u16(place.height));
  xcb_render_free_picture(connection_.raw(), tiles);
}

void SceneRenderer::paint(const Layer& layer, const Surface& surface, const DeviceRect& part) {
  xcb_connection_t* const c = connection_.raw();
  const bool clipped = layer.shaped && !layer.solid.contains(part);
  const bool blended = layer.blended && !layer.solid.contains(part);
  if (clipped) {
    xcb_xfixes_set_picture_clip_region(c, canvasPicture_, surface.shape,
                                       s16(layer.bounds.x + layer.border - plan_.frame.x),
                                       s16(layer.bounds.y + layer.border - plan_.frame.y));
  }
  std::uint32_t mask = XCB_NONE;
  if (layer.opacity != fullyOpaque) {
    mask = connection_.newId();
    xcb_render_create_solid_fill(c, mask, {0, 0, 0, static_cast<std::uint16_t>(layer.opacity >> 16)});
  }
  xcb_render_composite(c, blended ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, surface.picture, mask,
                       canvasPicture_, s16(part.x - layer.bounds.x), s16(part.y - layer.bounds.y), 0, 0,
                       s16(part.x - plan_.frame.x), s16(part.y - plan_.frame.y), u16(part.width),
                       u16(part.height));
  if (mask != XCB_NONE) xcb_render_free_picture(c, mask);
  if (clipped) xcb_xfixes_set_picture_clip_region(c, canvasPicture_, XCB_NONE, 0, 0);
}

bool SceneRenderer::fetch(xcb_drawable_t drawable, DevicePoint corner, const Rows& rows,
                          const Segment& segment) {
  xcb_connection_t* const c = connection_.raw();
  const std::size_t rowBytes = static_cast<std::size_t>(plan_.frame.width) * 4;
  const std::size_t offset = rowBytes * static_cast<std::size_t>(rows.top);
  const std::size_t size = rowBytes * static_cast<std::size_t>(rows.bottom - rows.top);
  const std::int16_t x = s16(corner.x);
  const std::int16_t y = s16(corner.y + rows.top);
  const std::uint16_t width = u16(plan_.frame.width);
  const std::uint16_t height = u16(rows.bottom - rows.top);
  if (rows.isEmpty()) return true;
  if (segment.serverId() != 0) {
    const auto cookie =
        xcb_shm_get_image(c, drawable, x, y, width, height, allPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP,
                          segment.serverId(), static_cast<std::uint32_t>(offset));
    fetched_ = cookie.sequence;
    damage_.ask();
    return connection_.reply(xcb_shm_get_image_reply, cookie).has_value();
  }
  const auto cookie = xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, x, y, width, height, allPlanes);
  fetched_ = cookie.sequence;
  damage_.ask();
  const auto image = connection_.reply(xcb_get_image_reply, cookie);
  if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image->get())) < size) return false;
  std::memcpy(segment.bytes() + offset, xcb_get_image_data(image->get()), size);
  return true;
}

}  // namespace velicor::screencapture
