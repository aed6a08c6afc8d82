// SPDX-License-Identifier: Apache-2.0
// Preloaded before the C library with LD_PRELOAD: injects faults that are rare on a real system.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tests/e2e/faulty/switches.h"

// The C library's internal names of its allocator.
extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);

namespace {

using e2e::Switches;
using e2e::Threads;

Switches* g_switches = nullptr;

void count_signal(int) { ++g_switches->caught_signals; }

void catch_signals() {
  struct sigaction action = {};
  action.sa_handler = count_signal;  // without SA_RESTART
  sigaction(SIGUSR1, &action, nullptr);
}

__attribute__((constructor)) void map_switches() {
  const char* path = getenv(e2e::kSwitchesVariable);
  int fd = path == nullptr ? -1 : static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, O_RDWR));
  if (fd < 0) return;
  void* address = mmap(nullptr, sizeof(Switches), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  close(fd);
  if (address == MAP_FAILED) return;
  g_switches = static_cast<Switches*>(address);
  catch_signals();
}

bool allocation_fails() {
  if (g_switches == nullptr) return false;
  bool always = g_switches->without_memory != 0;
  if (!always && g_switches->failing_allocation == 0) return false;
  Threads thread = gettid() == getpid() ? Threads::main : Threads::others;
  if (g_switches->failing_threads != thread) return false;
  if (!always && g_switches->failing_allocation.fetch_sub(1) != 1) return false;
  ++g_switches->failed_allocations;
  errno = ENOMEM;
  return true;
}

bool is_pipe(int fd) {
  struct stat status;
  return fstat(fd, &status) == 0 && S_ISFIFO(status.st_mode);
}

// Standard output and error are pipes, too: they carry the log.
bool is_parent_pipe(int fd) { return fd > STDERR_FILENO && is_pipe(fd); }

// The number of bytes that a file can take; `size` for other descriptors.
size_t room_in(int fd, size_t size) {
  struct stat status;
  size_t max = g_switches == nullptr ? 0 : g_switches->max_file_size.load();
  if (max == 0 || fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return size;
  auto used = static_cast<size_t>(status.st_size);
  return used < max ? max - used : 0;
}

bool count_down(std::atomic<uint32_t>& count) {
  if (count == 0) return false;
  --count;
  return true;
}

bool file_fails() {
  if (g_switches == nullptr || g_switches->file_error == 0) return false;
  errno = static_cast<int>(g_switches->file_error);
  return true;
}

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED void* malloc(size_t size) { return allocation_fails() ? nullptr : __libc_malloc(size); }

EXPORTED void* calloc(size_t count, size_t size) {
  return allocation_fails() ? nullptr : __libc_calloc(count, size);
}

EXPORTED ssize_t write(int fd, const void* bytes, size_t size) {
  uint32_t max = g_switches == nullptr ? 0 : g_switches->max_written.load();
  if (max != 0 && size > max && is_parent_pipe(fd)) size = max;
  size_t room = room_in(fd, size);
  if (room == 0 && size > 0) {
    errno = ENOSPC;
    return -1;
  }
  return syscall(SYS_write, fd, bytes, room < size ? room : size);
}

EXPORTED ssize_t read(int fd, void* bytes, size_t size) {
  if (g_switches != nullptr && is_parent_pipe(fd) && count_down(g_switches->failing_reads)) {
    errno = static_cast<int>(g_switches->read_error);
    return -1;
  }
  return syscall(SYS_read, fd, bytes, size);
}

EXPORTED int mkdir(const char* path, mode_t mode) {
  if (file_fails()) return -1;
  return static_cast<int>(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}

EXPORTED int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  if ((flags & O_ACCMODE) != O_RDONLY && file_fails()) return -1;
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}
