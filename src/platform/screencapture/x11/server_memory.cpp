#include "platform/screencapture/x11/server_memory.h"

#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <unistd.h>
#include <xcb/shm.h>

namespace velicor::screencapture {

namespace {

// Room to grow: a loupe that is being enlarged does not need new memory at every step. Also a multiple of
// the page size, which graphics devices want for memory they import.
constexpr std::size_t granule = 256UL * 1024;

std::size_t roundedUp(std::size_t size) { return (size + granule - 1) / granule * granule; }

std::byte* mapped(void* memory) { return static_cast<std::byte*>(memory); }

}  // namespace

ServerMemory::ServerMemory(x11::Connection& connection, Way first) : connection_(connection), way_(first) {
  const x11::Extension& shm = connection.extensions().shm;
  if (way_ == Way::file && !shm.atLeast(1, 2)) way_ = Way::systemV;
  if (way_ == Way::systemV && !shm.present) way_ = Way::copy;
}

std::shared_ptr<Segment> ServerMemory::make(std::size_t size) {
  const std::size_t whole = roundedUp(size);
  if (way_ == Way::file) {
    if (auto segment = makeByFile(whole)) return segment;
    way_ = Way::systemV;
  }
  if (way_ == Way::systemV) {
    if (auto segment = makeBySystemV(whole)) return segment;
    way_ = Way::copy;
  }
  return makePlain(whole);
}

void ServerMemory::retire(const Segment& segment) {
  if (segment.serverId() != 0) xcb_shm_detach(connection_.raw(), segment.serverId());
}

std::shared_ptr<Segment> ServerMemory::makeByFile(std::size_t size) {
  const int file = memfd_create("velicor-frame", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (file < 0) return nullptr;
  // The seal keeps anyone who gets hold of the file from pulling the memory away under us.
  const bool sized =
      ftruncate(file, static_cast<off_t>(size)) == 0 && fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK) == 0;
  void* memory = sized ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0) : MAP_FAILED;
  if (memory == MAP_FAILED) {
    close(file);
    return nullptr;
  }
  const std::uint32_t id = connection_.newId();
  // Sending takes the descriptor over and closes it.
  if (!connection_.check(xcb_shm_attach_fd_checked(connection_.raw(), id, file, 0))) {
    munmap(memory, size);
    return nullptr;
  }
  return std::make_shared<Segment>(mapped(memory), size, id,
                                   [](std::byte* bytes, std::size_t length) { munmap(bytes, length); });
}

std::shared_ptr<Segment> ServerMemory::makeBySystemV(std::size_t size) {
  const int handle = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
  if (handle < 0) return nullptr;
  void* memory = shmat(handle, nullptr, 0);
  if (memory == reinterpret_cast<void*>(-1)) {  // NOLINT(performance-no-int-to-ptr): how it refuses
    shmctl(handle, IPC_RMID, nullptr);
    return nullptr;
  }
  const std::uint32_t id = connection_.newId();
  const Status attached =
      connection_.check(xcb_shm_attach_checked(connection_.raw(), id, static_cast<std::uint32_t>(handle), 0));
  // From here on it goes when both sides have let go of it, however they end.
  shmctl(handle, IPC_RMID, nullptr);
  if (!attached) {
    shmdt(memory);
    return nullptr;
  }
  return std::make_shared<Segment>(mapped(memory), size, id,
                                   [](std::byte* bytes, std::size_t) { shmdt(bytes); });
}

std::shared_ptr<Segment> ServerMemory::makePlain(std::size_t size) {
  return std::make_shared<Segment>(new std::byte[size](), size, 0,
                                   [](std::byte* bytes, std::size_t length) {
                                     explicit_bzero(bytes, length);
                                     delete[] bytes;
                                   });
}

}  // namespace velicor::screencapture
