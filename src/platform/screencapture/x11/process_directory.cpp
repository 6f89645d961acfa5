#include "platform/screencapture/x11/process_directory.h"

#include <algorithm>

#include <unistd.h>
#include <xcb/res.h>

namespace velicor::screencapture {

ProcessDirectory::ProcessDirectory(x11::Connection& connection, const x11::OwnClients& own)
    : connection_(connection), own_(own) {}

void ProcessDirectory::refresh() {
  if (!connection_.extensions().resource.atLeast(1, 2)) return;
  const xcb_res_client_id_spec_t everyone{XCB_NONE, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
  const auto reply = connection_.reply(xcb_res_query_client_ids_reply,
                                       xcb_res_query_client_ids(connection_.raw(), 1, &everyone));
  if (!reply) return;
  processes_.clear();
  auto entries = xcb_res_query_client_ids_ids_iterator(reply->get());
  for (; entries.rem > 0; xcb_res_client_id_value_next(&entries)) {
    if (xcb_res_client_id_value_value_length(entries.data) < 1) continue;
    const auto process = static_cast<pid_t>(*xcb_res_client_id_value_value(entries.data));
    processes_[entries.data->spec.client & ~connection_.resourceIdMask()] = process;
  }
}

bool ProcessDirectory::knows(WindowId id) const {
  return processes_.contains(id & ~connection_.resourceIdMask()) || isOwn(id);
}

std::optional<pid_t> ProcessDirectory::processOf(WindowId id) const {
  if (isOwn(id)) return getpid();
  const auto entry = processes_.find(id & ~connection_.resourceIdMask());
  return entry == processes_.end() ? std::nullopt : std::optional(entry->second);
}

x11::ClientSet ProcessDirectory::clientsOf(const std::vector<RunningApplication>& applications) const {
  const auto wanted = [&](pid_t process) {
    return std::any_of(applications.begin(), applications.end(),
                       [process](const RunningApplication& each) { return each.processID == process; });
  };
  x11::ClientSet set;
  if (wanted(getpid())) set = own_.snapshot();
  for (const auto& [base, process] : processes_) {
    // Ours are told by the list alone: the server may know this process under another number.
    if (process != getpid() && wanted(process)) set.add(base, connection_.resourceIdMask());
  }
  return set;
}

}  // namespace velicor::screencapture
