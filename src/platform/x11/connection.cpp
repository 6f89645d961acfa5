#include "platform/x11/connection.h"

#include <array>
#include <cstdio>
#include <utility>

#include <xcb/xcb_event.h>

namespace velicor::x11 {

namespace {

const xcb_screen_t* screenOf(xcb_connection_t* connection, int number) {
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; screens.rem > 0; xcb_screen_next(&screens)) {
    if (number-- == 0) return screens.data;
  }
  return nullptr;
}

std::string hexadecimal(std::uint32_t value) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%x", value);
  return text.data();
}

// The extension's name and the error's number within it, for errors beyond the core protocol.
std::string extensionErrorName(const Extensions& all, std::uint8_t code) {
  const std::pair<const char*, const Extension*> table[] = {{"Damage", &all.damage}, {"XFixes", &all.fixes},
                                                            {"XInput", &all.input},  {"RandR", &all.randr},
                                                            {"Render", &all.render}, {"MIT-SHM", &all.shm}};
  const std::pair<const char*, const Extension*>* best = nullptr;
  for (const auto& entry : table) {
    const bool candidate = entry.second->present && entry.second->firstError <= code;
    if (candidate && (!best || entry.second->firstError > best->second->firstError)) best = &entry;
  }
  if (!best) return "error " + std::to_string(code);
  return std::string(best->first) + " error " + std::to_string(code - best->second->firstError);
}

std::string requestName(const Extensions& all, const xcb_generic_error_t& error) {
  const std::pair<const char*, const Extension*> table[] = {
      {"Composite", &all.composite}, {"Damage", &all.damage}, {"XFixes", &all.fixes},
      {"XInput", &all.input},        {"RandR", &all.randr},   {"Render", &all.render},
      {"X-Resource", &all.resource}, {"Shape", &all.shape},   {"MIT-SHM", &all.shm}};
  for (const auto& [name, extension] : table) {
    if (extension->present && extension->majorOpcode == error.major_code) {
      return std::string(name) + " request " + std::to_string(error.minor_code);
    }
  }
  const char* label = xcb_event_get_request_label(error.major_code);
  return label ? label : "request " + std::to_string(error.major_code);
}

constexpr std::uint8_t firstExtensionError = 128;

// More events than usually come with one reply: taking in no more than these needs no memory.
constexpr std::size_t usuallyPeeked = 64;

}  // namespace

Result<std::unique_ptr<Connection>> Connection::open(const std::string& displayName, OwnClients& own) {
  int screenNumber = 0;
  xcb_connection_t* raw = xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenNumber);
  const bool usable = xcb_connection_has_error(raw) == 0 && screenOf(raw, screenNumber);
  if (!usable) {
    xcb_disconnect(raw);
    const char* environment = std::getenv("DISPLAY");
    const std::string wanted = displayName.empty() ? (environment ? environment : "") : displayName;
    return failure(errorDomain, noServer,
                   wanted.empty() ? "No X display is named (DISPLAY is not set)"
                                  : "The X server of display " + wanted + " can't be reached");
  }
  std::unique_ptr<Connection> connection(new Connection(raw, screenNumber, own));
  if (connection->isLost()) {
    return failure(errorDomain, connectionLost, "The X server ended the connection");
  }
  return connection;
}

Connection::Connection(xcb_connection_t* raw, int screenNumber, OwnClients& own)
    : raw_(raw),
      screenNumber_(screenNumber),
      screen_(screenOf(raw, screenNumber)),
      own_(own),
      extensions_(negotiateExtensions(raw)),
      atoms_(raw, screenNumber) {
  own_.add(resourceIdBase(), resourceIdMask());
  peeked_.reserve(usuallyPeeked);
}

Connection::~Connection() {
  own_.remove(resourceIdBase());
  xcb_disconnect(raw_);
}

xcb_atom_t Connection::intern(std::string_view name) {
  const auto cookie = xcb_intern_atom(raw_, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const auto answer = reply(xcb_intern_atom_reply, cookie);
  return answer ? (*answer)->atom : xcb_atom_t{XCB_ATOM_NONE};
}

Status Connection::check(xcb_void_cookie_t cookie) {
  Owned<xcb_generic_error_t> error(xcb_request_check(raw_, cookie));
  if (!error && !isLost()) return {};
  return tl::make_unexpected(explain(std::move(error)));
}

Owned<xcb_generic_event_t> Connection::nextEvent() { return next(xcb_poll_for_event); }

Owned<xcb_generic_event_t> Connection::queuedEvent() { return next(xcb_poll_for_queued_event); }

Owned<xcb_generic_event_t> Connection::next(Poll* poll) {
  while (true) {
    Owned<xcb_generic_event_t> event = takePeeked();
    if (!event) event.reset(poll(raw_));
    if (!event) break;
    if (event->response_type != 0) return event;
    if (onError_) onError_(*reinterpret_cast<const xcb_generic_error_t*>(event.get()));
  }
  if (isLost()) noticeLoss();
  return nullptr;
}

Owned<xcb_generic_event_t> Connection::takePeeked() {
  if (taken_ < peeked_.size()) return std::move(peeked_[taken_++]);
  peeked_.clear();
  taken_ = 0;
  return nullptr;
}

void Connection::fillPeeked() {
  while (Owned<xcb_generic_event_t> event{xcb_poll_for_queued_event(raw_)})
    peeked_.push_back(std::move(event));
}

std::string Connection::describe(const xcb_generic_error_t& error) const {
  const char* label =
      error.error_code < firstExtensionError ? xcb_event_get_error_label(error.error_code) : nullptr;
  const std::string what = label ? label : extensionErrorName(extensions_, error.error_code);
  return what + " from " + requestName(extensions_, error) + " (resource " + hexadecimal(error.resource_id) +
         ")";
}

Error Connection::explain(Owned<xcb_generic_error_t> error) {
  if (error) return {std::string(errorDomain), error->error_code, describe(*error)};
  noticeLoss();
  return {std::string(errorDomain), connectionLost, "The connection to the X server was lost"};
}

void Connection::noticeLoss() {
  if (const auto handler = std::exchange(onLoss_, nullptr)) handler();
}

}  // namespace velicor::x11
