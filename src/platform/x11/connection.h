#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <xcb/xcb.h>

#include "platform/base/error.h"
#include "platform/x11/atoms.h"
#include "platform/x11/extensions.h"
#include "platform/x11/own_clients.h"
#include "platform/x11/owned.h"

namespace velicor::x11 {

// Errors of this module carry this domain. Positive codes are the X server's own error codes.
inline constexpr std::string_view errorDomain = "velicor.x11";

enum ErrorCode : int {
  noServer = -1,        // no display named, or nobody answers there
  connectionLost = -2,  // the server went away, or ended the connection
};

// The event's kind, without the mark of events that a client sent.
inline std::uint8_t eventType(const xcb_generic_event_t& event) {
  return static_cast<std::uint8_t>(event.response_type & 0x7f);
}

// Whether a client sent it: it need not be what the server did.
inline bool isSent(const xcb_generic_event_t& event) { return (event.response_type & 0x80) != 0; }

// One connection to the X server. Used by one thread at a time. An error of the server never ends the
// process: it comes back from reply() and check(), or, for requests that nobody waits for, goes to the error
// handler from within nextEvent().
class Connection {
 public:
  using ErrorHandler = std::function<void(const xcb_generic_error_t&)>;

  // The display of the environment when no name is given. Counts as one of the process's own clients, in
  // `own`, until it is closed.
  static Result<std::unique_ptr<Connection>> open(const std::string& displayName = {},
                                                  OwnClients& own = OwnClients::shared());
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // For making requests. Replies and events are taken through this class only.
  xcb_connection_t* raw() const { return raw_; }

  int screenNumber() const { return screenNumber_; }
  const xcb_screen_t& screen() const { return *screen_; }
  xcb_window_t root() const { return screen_->root; }
  std::uint32_t resourceIdBase() const { return xcb_get_setup(raw_)->resource_id_base; }
  std::uint32_t resourceIdMask() const { return xcb_get_setup(raw_)->resource_id_mask; }
  std::uint32_t newId() { return xcb_generate_id(raw_); }

  // Readable when events may have come. Events may also wait inside without the descriptor being readable
  // (fetching a reply takes in what came before it): take them all with nextEvent() before waiting on it.
  int fileDescriptor() const { return xcb_get_file_descriptor(raw_); }

  xcb_atom_t atom(Atom name) const { return atoms_[name]; }
  xcb_atom_t compositorSelection() const { return atoms_.compositorSelection(); }
  xcb_atom_t traySelection() const { return atoms_.traySelection(); }

  // Whether one client made both.
  bool haveOneMaker(std::uint32_t one, std::uint32_t other) const {
    return ((one ^ other) & ~resourceIdMask()) == 0;
  }

  // An atom whose name is not known beforehand. A round trip; XCB_ATOM_NONE when the server is gone.
  xcb_atom_t intern(std::string_view name);

  const Extensions& extensions() const { return extensions_; }

  // The reply to a request, e.g. reply(xcb_get_geometry_reply, xcb_get_geometry(raw(), window)). Blocks until
  // it is there. Never null on success.
  template <typename Reply, typename Cookie>
  Result<Owned<Reply>> reply(Reply* (*fetch)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
                             std::type_identity_t<Cookie> cookie) {
    xcb_generic_error_t* error = nullptr;
    Owned<Reply> result(fetch(raw_, cookie, &error));
    if (result) return result;
    return tl::make_unexpected(explain(Owned<xcb_generic_error_t>(error)));
  }

  // The outcome of a request made in its `_checked` form. A round trip.
  Status check(xcb_void_cookie_t cookie);

  // The next event, or none when none waits. Reads what has arrived, never blocks.
  Owned<xcb_generic_event_t> nextEvent();

  // The same of what has been read already: no system call.
  Owned<xcb_generic_event_t> queuedEvent();

  // Shows the events that have been read already, in their order, without taking them.
  template <typename Look>
  void peekEvents(Look look) {
    fillPeeked();
    for (std::size_t i = taken_; i < peeked_.size(); ++i) {
      if (peeked_[i]->response_type != 0) look(std::as_const(*peeked_[i]));
    }
  }

  // The same with the errors among them, which go to the error handler later all the same.
  template <typename Look>
  void peekErrors(Look look) {
    fillPeeked();
    for (std::size_t i = taken_; i < peeked_.size(); ++i) {
      if (peeked_[i]->response_type == 0) look(reinterpret_cast<const xcb_generic_error_t&>(*peeked_[i]));
    }
  }

  void flush() { xcb_flush(raw_); }

  // Receives the errors of requests that nobody waited for, in their order among the events.
  void setErrorHandler(ErrorHandler handler) { onError_ = std::move(handler); }

  // "BadWindow from QueryTree (resource 0x400012)" and the like.
  std::string describe(const xcb_generic_error_t& error) const;

  // Whether the server is gone. Found out when something is sent or read.
  bool isLost() const { return xcb_connection_has_error(raw_) != 0; }

  // Called once, on the using thread, from the first call of this class that finds the server gone.
  void setLossHandler(std::function<void()> handler) { onLoss_ = std::move(handler); }

 private:
  Connection(xcb_connection_t* raw, int screenNumber, OwnClients& own);

  using Poll = xcb_generic_event_t*(xcb_connection_t*);
  Owned<xcb_generic_event_t> next(Poll* poll);
  Owned<xcb_generic_event_t> takePeeked();
  void fillPeeked();
  Error explain(Owned<xcb_generic_error_t> error);
  void noticeLoss();

  xcb_connection_t* raw_;
  int screenNumber_;
  const xcb_screen_t* screen_;
  OwnClients& own_;
  Extensions extensions_;
  Atoms atoms_;
  std::vector<Owned<xcb_generic_event_t>> peeked_;  // those from taken_ on come before what xcb still has
  std::size_t taken_ = 0;
  ErrorHandler onError_;
  std::function<void()> onLoss_;
};

}  // namespace velicor::x11
