// SPDX-License-Identifier: Apache-2.0
// A merge: find the current log (or start with an empty directory), rotate it when that is due,
// append the temporary file and sync the log, sync the links, log the success, delete the temporary
// file. A step that fails ends the merge, except for the hand-off, the log's owner and mode, and
// the links.
#include "src/capture/kpi_logs.h"

#include <NativeDropBoxWriter.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "phone_path.h"
#include "src/host/base/log.h"
#include "src/host/base/scoped_fd.h"

namespace {

constexpr off_t kRotationSize = 0x1E00000;  // 30 MiB
constexpr double kRotationSeconds = 43200;

constexpr gid_t kLogGroup = 2002;
constexpr mode_t kCreationMode = 0770;
constexpr mode_t kLogMode = 0660;
constexpr size_t kChunkSize = 256;

constexpr char kDropBoxTag[] = "modem_vorn";

// The size of the file, or -1 with errno.
off_t size_of(const VornPath& path) {
  struct stat status;
  return stat(phone_path(path), &status) == 0 ? status.st_size : -1;
}

void find_current_log(VornPath& log, KpiLogState& state) {
  if (vorn_get_filename(kCurrentIndex, log) == 0) return;
  LOGE("vorn_update_current_log: Unable to get cur log file");
  LOGE("vorn_update_current_log: clean the whole dir!");
  vorn_reset_dir();
  vorn_create_new_log(log, state.are_links_synced);
}

// The first merge of a process starts the timer; a log is then due by size only.
bool is_rotation_due(off_t size, time_t now, time_t& handed_off) {
  if (handed_off == 0) {
    handed_off = now;
  } else if (difftime(now, handed_off) >= kRotationSeconds) {
    return true;
  }
  return size >= kRotationSize;
}

void hand_off(const VornPath& log) {
  LOGE("vorn_update_current_log: send %s to dropbox.", log);
  if (!NativeDropBoxWriter::addText(kDropBoxTag, log)) LOGE("vorn: send to dropbox failed!.");
}

// Makes a new log the current one and hands off the one before unless it is empty.
bool rotate(VornPath& log, off_t& size, time_t now, KpiLogState& state) {
  if (size > 0) {
    state.handed_off = now;
    hand_off(log);
  }
  if (vorn_create_new_log(log, state.are_links_synced) != 0) {
    LOGE("vorn_update_current_log: can't create new log.");
    return false;
  }
  size = 0;
  return true;
}

// Lets the group of the log readers read the log. Failures are logged and do not end the merge.
void set_log_owner_and_mode(const VornPath& log) {
  if (chown(phone_path(log), getuid(), kLogGroup) != 0) {
    LOGE("vorn_update_current_log: Unable to chown %s, errno %d", log, errno);
  }
  if (chmod(phone_path(log), kLogMode) != 0) {
    LOGE("vorn_update_current_log: Unable to chmod %s, errno %d", log, errno);
  }
}

// Continues after short writes. False with errno when not all bytes were written.
bool write_all(const ScopedFd& file, const char* bytes, size_t size) {
  while (size > 0) {
    ssize_t written = write(file.get(), bytes, size);
    if (written == 0) errno = ENOSPC;  // write() sets none in this case
    if (written <= 0) return false;
    bytes += written;
    size -= static_cast<size_t>(written);
  }
  return true;
}

struct OpenFile {
  const VornPath& path;
  ScopedFd fd;
};

bool log_failure(const char* what, const OpenFile& file) {
  LOGE("vorn_update_current_log: Unable to %s %s, errno %d", what, file.path, errno);
  return false;
}

// Copies all of `from` and syncs `to`. False after logging the failure. The sync of `from` is not
// checked: the file is deleted next.
bool copy(const OpenFile& from, const OpenFile& to) {
  char chunk[kChunkSize];
  ssize_t size;
  while ((size = read(from.fd.get(), chunk, sizeof chunk)) > 0) {
    if (!write_all(to.fd, chunk, static_cast<size_t>(size))) return log_failure("write", to);
  }
  if (size < 0) return log_failure("read", from);
  if (fsync(to.fd.get()) != 0) return log_failure("write", to);
  fsync(from.fd.get());
  return true;
}

// Appends to a log of `size` bytes. A failure cuts the log back to that size: part of a package
// must not stay in it.
bool append(const VornPath& temporary, const VornPath& log, off_t size) {
  OpenFile to = {
      log, ScopedFd(open(phone_path(log), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, kCreationMode))};
  OpenFile from = {temporary,
                   ScopedFd(to.fd ? open(phone_path(temporary), O_RDONLY | O_CLOEXEC) : -1)};
  if (!from.fd) {
    LOGE("vorn_update_current_log: Unable to open files, errno %d", errno);
    return false;
  }
  if (size == 0) set_log_owner_and_mode(log);
  if (copy(from, to)) return true;
  if (ftruncate(to.fd.get(), size) != 0) log_failure("truncate", to);
  return false;
}

}  // namespace

void vorn_update_current_log(const VornPath& temporary, KpiLogState& state) {
  off_t added = size_of(temporary);
  if (added < 0) {
    LOGE("vorn_update_current_log: Unable to stat temp files, errno %d", errno);
    return;
  }
  VornPath log = {};
  find_current_log(log, state);
  off_t size = size_of(log);
  if (size < 0) {
    LOGE("vorn_update_current_log: Unable to stat cur log file %d", errno);
    return;
  }

  time_t now = time(nullptr);
  bool is_due = is_rotation_due(size + added, now, state.handed_off);
  if (is_due && !rotate(log, size, now, state)) return;
  if (!append(temporary, log, size)) return;
  // Before the success line: what it reports must survive a power failure, links included.
  if (!state.are_links_synced) state.are_links_synced = vorn_sync_links();
  LOGE("vorn_update_current_log: update %s succeed.", log);
  unlink(phone_path(temporary));
}
