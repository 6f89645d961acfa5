#include "support/x_client.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <thread>
#include <vector>

#include <sys/uio.h>
#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/xcbext.h>

#include "platform/x11/owned.h"

namespace velicor::test {

namespace {

constexpr int tile = 256;

template <typename Reply>
struct Freed {
  Reply* value;
  ~Freed() { std::free(value); }
  Reply* operator->() const { return value; }
  explicit operator bool() const { return value != nullptr; }
};

// As long as a program may take to start on a machine that does much else.
bool eventually(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(120);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

}  // namespace

std::uint32_t Pattern::at(int x, int y) const {
  const int px = x & (tile - 1);
  const int py = y & (tile - 1);
  const auto channel = [](int value, int mask) { return static_cast<std::uint32_t>(value & mask); };
  return channel(px * 3 + seed * 40, 0xff) << 16 | channel(py * 5 + seed * 70, 0xff) << 8 |
         channel((px ^ py) + seed * 90, 0x7f);
}

XClient::XClient(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
  if (xcb_connection_has_error(connection_)) {
    xcb_disconnect(connection_);
    throw std::runtime_error("no X server at " + display);
  }
  screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

XClient::~XClient() {
  if (own_) own_->remove(xcb_get_setup(connection_)->resource_id_base);
  xcb_disconnect(connection_);
}

void XClient::joinOwn(velicor::x11::OwnClients& own) {
  own_ = &own;
  own.add(connection_);
}

std::uint32_t XClient::alphaVisual() {
  if (alphaVisual_ != 0) return alphaVisual_;
  auto depths = xcb_screen_allowed_depths_iterator(screen_);
  while (depths.rem > 0 && depths.data->depth != 32)
    xcb_depth_next(&depths);
  alphaVisual_ = xcb_depth_visuals_iterator(depths.data).data->visual_id;
  alphaColours_ = xcb_generate_id(connection_);
  xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, alphaColours_, screen_->root, alphaVisual_);
  return alphaVisual_;
}

xcb_window_t XClient::makeWindow(const DeviceRect& place, Look look) {
  const std::uint32_t visual = look.alpha ? alphaVisual() : screen_->root_visual;
  const std::uint32_t colours = look.alpha ? alphaColours_ : screen_->default_colormap;
  const std::uint32_t values[] = {0, look.borderColour, look.managed ? 0U : 1U, colours};
  const xcb_window_t window = xcb_generate_id(connection_);
  xcb_create_window(connection_, look.alpha ? 32 : screen_->root_depth, window, screen_->root,
                    static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y),
                    static_cast<std::uint16_t>(place.width), static_cast<std::uint16_t>(place.height),
                    static_cast<std::uint16_t>(look.border), XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                    XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
                    values);
  return window;
}

xcb_window_t XClient::showPattern(const DeviceRect& place, Pattern pattern, Look look) {
  const xcb_window_t window = makeWindow(place, look);
  setPattern(window, pattern);
  map(window);
  if (!look.managed) return window;
  // The window manager has framed it when it says which state it is in.
  if (!eventually([&] { return isManaged(window); })) {
    throw std::runtime_error("no window manager took the window");
  }
  return window;
}

bool XClient::isManaged(xcb_window_t window) const {
  const Freed<xcb_get_property_reply_t> reply{xcb_get_property_reply(
      connection_, xcb_get_property(connection_, 0, window, atom("WM_STATE"), XCB_ATOM_ANY, 0, 2), nullptr)};
  return reply && reply->format == 32;
}

bool XClient::findManager() {
  const xcb_window_t probe = makeWindow({0, 0, 10, 10}, {.managed = true});
  const auto isListed = [&] {
    const Freed<xcb_get_property_reply_t> reply{xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, 0, root(), atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW, 0, 1024),
        nullptr)};
    if (!reply || reply->format != 32) return false;
    const auto* first = static_cast<const xcb_window_t*>(xcb_get_property_value(reply.value));
    const auto* end = first + reply->value_len;
    return std::find(first, end, probe) != end;
  };
  // A busy one would have the more to do the more often it is asked.
  constexpr auto patience = std::chrono::milliseconds(200);
  auto nextRequest = std::chrono::steady_clock::now();
  const bool found = eventually([&] {
    if (const auto now = std::chrono::steady_clock::now(); now >= nextRequest) {
      map(probe);
      nextRequest = now + patience;
    }
    return isManaged(probe) && isListed();
  });
  destroy(probe);
  sync();
  // Until it has gone from there too, the manager may still place what has this number; soon that is
  // another's window.
  return found && eventually([&] { return !isListed(); });
}

xcb_window_t XClient::showColour(const DeviceRect& place, std::uint32_t colour) {
  const xcb_window_t window = makeWindow(place);
  setColour(window, colour);
  map(window);
  return window;
}

// As the root window's depth wants it: eight bits a channel, or ten.
std::uint32_t XClient::pixelOf(std::uint32_t colour) const {
  constexpr std::uint8_t tenBitDepth = 30;
  if (screen_->root_depth != tenBitDepth) return colour;
  const auto wide = [colour](int shift) {
    const std::uint32_t value = colour >> shift & 0xff;
    return value << 2 | value >> 6;
  };
  return wide(16) << 20 | wide(8) << 10 | wide(0);
}

xcb_pixmap_t XClient::patternPixmap(Pattern pattern) {
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(tile) * tile);
  for (int y = 0; y < tile; ++y) {
    for (int x = 0; x < tile; ++x) {
      pixels[static_cast<std::size_t>(y) * tile + static_cast<std::size_t>(x)] = pixelOf(pattern.at(x, y));
    }
  }
  const xcb_pixmap_t pixmap = xcb_generate_id(connection_);
  const xcb_gcontext_t gc = xcb_generate_id(connection_);
  xcb_create_pixmap(connection_, screen_->root_depth, pixmap, screen_->root, tile, tile);
  xcb_create_gc(connection_, gc, pixmap, 0, nullptr);
  // In strips: one request may be limited to 256 KiB.
  constexpr int strip = 32;
  for (int y = 0; y < tile; y += strip) {
    xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, gc, tile, strip, 0,
                  static_cast<std::int16_t>(y), 0, screen_->root_depth, strip * tile * 4,
                  reinterpret_cast<const std::uint8_t*>(&pixels[static_cast<std::size_t>(y) * tile]));
  }
  xcb_free_gc(connection_, gc);
  return pixmap;
}

void XClient::setPattern(xcb_window_t window, Pattern pattern) {
  const xcb_pixmap_t pixmap = patternPixmap(pattern);
  xcb_change_window_attributes(connection_, window, XCB_CW_BACK_PIXMAP, &pixmap);
  xcb_clear_area(connection_, 0, window, 0, 0, 0, 0);
  xcb_free_pixmap(connection_, pixmap);
  sync();
}

void XClient::setColour(xcb_window_t window, std::uint32_t pixel) {
  xcb_change_window_attributes(connection_, window, XCB_CW_BACK_PIXEL, &pixel);
  xcb_clear_area(connection_, 0, window, 0, 0, 0, 0);
  sync();
}

void XClient::fill(xcb_window_t window, const DeviceRect& rect, std::uint32_t pixel) {
  const xcb_gcontext_t gc = xcb_generate_id(connection_);
  const xcb_rectangle_t area{static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
                             static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height)};
  xcb_create_gc(connection_, gc, window, XCB_GC_FOREGROUND, &pixel);
  xcb_poly_fill_rectangle(connection_, window, gc, 1, &area);
  xcb_free_gc(connection_, gc);
  sync();
}

void XClient::map(xcb_window_t window) {
  xcb_map_window(connection_, window);
  sync();
}

void XClient::unmap(xcb_window_t window) {
  xcb_unmap_window(connection_, window);
  sync();
}

void XClient::destroy(xcb_window_t window) {
  xcb_destroy_window(connection_, window);
  sync();
}

void XClient::move(xcb_window_t window, int x, int y) {
  const std::uint32_t values[] = {static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
  xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
  sync();
}

void XClient::resize(xcb_window_t window, int width, int height) {
  const std::uint32_t values[] = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
  xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
  sync();
}

void XClient::raise(xcb_window_t window) { stack(window, XCB_STACK_MODE_ABOVE); }

void XClient::lower(xcb_window_t window) { stack(window, XCB_STACK_MODE_BELOW); }

void XClient::stack(xcb_window_t window, std::uint32_t mode) {
  xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
  sync();
}

void XClient::setNumber(xcb_window_t window, std::string_view property, std::uint32_t value) {
  setNumbers(window, property, {value});
}

void XClient::setNumbers(xcb_window_t window, std::string_view property,
                         const std::vector<std::uint32_t>& values) {
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_CARDINAL, 32,
                      static_cast<std::uint32_t>(values.size()), values.data());
  sync();
}

void XClient::setTitle(xcb_window_t window, std::string_view title) {
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                      static_cast<std::uint32_t>(title.size()), title.data());
  sync();
}

void XClient::clear(xcb_window_t window, std::string_view property) {
  xcb_delete_property(connection_, window, atom(property));
  sync();
}

xcb_window_t XClient::frame(xcb_window_t client, const DeviceRect& place, DevicePoint corner,
                            std::uint32_t colour) {
  const xcb_window_t frame = makeWindow(place);
  setColour(frame, colour);
  xcb_reparent_window(connection_, client, frame, static_cast<std::int16_t>(corner.x),
                      static_cast<std::int16_t>(corner.y));
  setNumbers(client, "WM_STATE", {1, XCB_NONE});
  map(client);
  map(frame);
  return frame;
}

void XClient::takeSelection(std::string_view selection) {
  xcb_set_selection_owner(connection_, makeWindow({0, 0, 1, 1}), atom(selection), XCB_CURRENT_TIME);
  sync();
}

void XClient::releaseSelection(std::string_view selection) {
  xcb_set_selection_owner(connection_, XCB_NONE, atom(selection), XCB_CURRENT_TIME);
  sync();
}

std::vector<std::uint32_t> XClient::screenImage(const DeviceRect& rect) const {
  const Freed<xcb_get_image_reply_t> reply{xcb_get_image_reply(
      connection_,
      xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root, static_cast<std::int16_t>(rect.x),
                    static_cast<std::int16_t>(rect.y), static_cast<std::uint16_t>(rect.width),
                    static_cast<std::uint16_t>(rect.height), ~0U),
      nullptr)};
  if (!reply) return {};
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(rect.width) *
                                    static_cast<std::size_t>(rect.height));
  std::memcpy(pixels.data(), xcb_get_image_data(reply.value), pixels.size() * 4);
  for (std::uint32_t& pixel : pixels)
    pixel &= 0xffffff;
  return pixels;
}

void XClient::shape(xcb_window_t window, const DeviceRect& only) {
  const xcb_rectangle_t area{static_cast<std::int16_t>(only.x), static_cast<std::int16_t>(only.y),
                             static_cast<std::uint16_t>(only.width), static_cast<std::uint16_t>(only.height)};
  xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED,
                       window, 0, 0, 1, &area);
  sync();
}

DevicePoint XClient::origin(xcb_window_t window) {
  const Freed<xcb_translate_coordinates_reply_t> reply{xcb_translate_coordinates_reply(
      connection_, xcb_translate_coordinates(connection_, window, screen_->root, 0, 0), nullptr)};
  return reply ? DevicePoint{reply->dst_x, reply->dst_y} : DevicePoint{};
}

void XClient::tell(xcb_window_t window, std::uint32_t mask, std::string_view what,
                   const std::array<std::uint32_t, 3>& values) const {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom(what);
  std::copy(values.begin(), values.end(), event.data.data32);
  xcb_send_event(connection_, 0, window, mask, reinterpret_cast<const char*>(&event));
}

void XClient::goToDesktop(std::uint32_t desktop) const {
  constexpr auto current = "_NET_CURRENT_DESKTOP";
  tell(root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, current,
       {desktop, XCB_CURRENT_TIME});
  const bool there = eventually([&] {
    const Freed<xcb_get_property_reply_t> reply{xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, root(), atom(current), XCB_ATOM_CARDINAL, 0, 1),
        nullptr)};
    return reply && reply->value_len == 1 &&
           *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.value)) == desktop;
  });
  if (!there) throw std::runtime_error("the window manager does not change desktops");
}

void XClient::dock(xcb_window_t icon) const {
  constexpr std::uint32_t requestDock = 0;
  const Freed<xcb_get_selection_owner_reply_t> tray{xcb_get_selection_owner_reply(
      connection_, xcb_get_selection_owner(connection_, atom("_NET_SYSTEM_TRAY_S0")), nullptr)};
  tell(tray->owner, XCB_EVENT_MASK_NO_EVENT, "_NET_SYSTEM_TRAY_OPCODE",
       {XCB_CURRENT_TIME, requestDock, icon});
  const bool docked = eventually([&] {
    const Freed<xcb_query_tree_reply_t> tree{
        xcb_query_tree_reply(connection_, xcb_query_tree(connection_, icon), nullptr)};
    return tree && tree->parent != root();
  });
  if (!docked) throw std::runtime_error("the panel does not take the icon");
}

void XClient::setBackdrop(Pattern pattern) {
  const xcb_pixmap_t pixmap = patternPixmap(pattern);
  xcb_change_window_attributes(connection_, screen_->root, XCB_CW_BACK_PIXMAP, &pixmap);
  xcb_clear_area(connection_, 0, screen_->root, 0, 0, 0, 0);
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, screen_->root, atom("_XROOTPMAP_ID"),
                      XCB_ATOM_PIXMAP, 32, 1, &pixmap);
  sync();
}

void XClient::defineMonitor(std::string_view name, const DeviceRect& rect, bool primary) {
  // The server refuses what a client that has not named its version asks for.
  std::free(xcb_randr_query_version_reply(connection_, xcb_randr_query_version(connection_, 1, 5), nullptr));
  const Freed<xcb_randr_get_screen_resources_reply_t> resources{xcb_randr_get_screen_resources_reply(
      connection_, xcb_randr_get_screen_resources(connection_, screen_->root), nullptr)};
  xcb_randr_output_t output = xcb_randr_get_screen_resources_outputs(resources.value)[0];
  xcb_randr_monitor_info_t info{};
  info.name = atom(name);
  info.primary = primary ? 1 : 0;
  info.nOutput = primary ? 1 : 0;
  info.x = static_cast<std::int16_t>(rect.x);
  info.y = static_cast<std::int16_t>(rect.y);
  info.width = static_cast<std::uint16_t>(rect.width);
  info.height = static_cast<std::uint16_t>(rect.height);
  // By hand: the library's own function for this request miscounts its length and loses the connection.
  xcb_randr_set_monitor_request_t header{};
  header.window = screen_->root;
  xcb_protocol_request_t request{3, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
  std::array<iovec, 5> parts{};
  parts[2] = {&header, sizeof header};
  parts[3] = {&info, sizeof info};
  parts[4] = {&output, primary ? sizeof output : 0};
  xcb_send_request(connection_, 0, &parts[2], &request);
  sync();
}

void XClient::deleteMonitor(std::string_view name) {
  xcb_randr_delete_monitor(connection_, screen_->root, atom(name));
  sync();
}

std::map<std::string, unsigned> XClient::resources(const std::function<bool(std::uint32_t base)>& meant) const {
  std::map<std::string, unsigned> counts;
  const velicor::x11::Owned<xcb_res_query_clients_reply_t> clients(
      xcb_res_query_clients_reply(connection_, xcb_res_query_clients(connection_), nullptr));
  for (int i = 0; i < xcb_res_query_clients_clients_length(clients.get()); ++i) {
    const std::uint32_t base = xcb_res_query_clients_clients(clients.get())[i].resource_base;
    if (!meant(base)) continue;
    const velicor::x11::Owned<xcb_res_query_client_pixmap_bytes_reply_t> pixmaps(xcb_res_query_client_pixmap_bytes_reply(
        connection_, xcb_res_query_client_pixmap_bytes(connection_, base), nullptr));
    counts["bytes of pixmaps"] += pixmaps ? pixmaps->bytes : 0;
    const velicor::x11::Owned<xcb_res_query_client_resources_reply_t> held(
        xcb_res_query_client_resources_reply(connection_, xcb_res_query_client_resources(connection_, base), nullptr));
    for (int k = 0; held && k < xcb_res_query_client_resources_types_length(held.get()); ++k) {
      const xcb_res_type_t& type = xcb_res_query_client_resources_types(held.get())[k];
      const velicor::x11::Owned<xcb_get_atom_name_reply_t> name(
          xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, type.resource_type), nullptr));
      counts[{xcb_get_atom_name_name(name.get()),
              static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get()))}] += type.count;
    }
  }
  return counts;
}

std::map<std::string, unsigned> XClient::resourcesOf(std::uint32_t process) const {
  return resources([&](std::uint32_t base) {
    const xcb_res_client_id_spec_t spec{base, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const velicor::x11::Owned<xcb_res_query_client_ids_reply_t> reply(
        xcb_res_query_client_ids_reply(connection_, xcb_res_query_client_ids(connection_, 1, &spec), nullptr));
    const auto first = reply ? xcb_res_query_client_ids_ids_iterator(reply.get()) : xcb_res_client_id_value_iterator_t{};
    return first.rem > 0 && xcb_res_client_id_value_value_length(first.data) > 0 &&
           *xcb_res_client_id_value_value(first.data) == process;
  });
}

void XClient::sync() const {
  std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

bool XClient::waitForProperty(std::string_view rootProperty) const {
  const xcb_atom_t property = atom(rootProperty);
  return eventually([&] {
    const Freed<xcb_get_property_reply_t> reply{xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, screen_->root, property, XCB_ATOM_ANY, 0, 1), nullptr)};
    return reply && reply->type != XCB_ATOM_NONE;
  });
}

bool XClient::waitForSelectionOwner(std::string_view selection, bool present) const {
  const xcb_atom_t name = atom(selection);
  return eventually([&] {
    const Freed<xcb_get_selection_owner_reply_t> reply{
        xcb_get_selection_owner_reply(connection_, xcb_get_selection_owner(connection_, name), nullptr)};
    return reply && (reply->owner != XCB_NONE) == present;
  });
}

xcb_atom_t XClient::atom(std::string_view name) const {
  const Freed<xcb_intern_atom_reply_t> reply{xcb_intern_atom_reply(
      connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
      nullptr)};
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace velicor::test
