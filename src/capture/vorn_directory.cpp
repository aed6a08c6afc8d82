// SPDX-License-Identifier: Apache-2.0
// Names in the directory: .0001 and .0002 are the index links, vorn_<time>.log the logs, and
// ~vorn<package>.log the temporary files.
#include "src/capture/kpi_logs.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <math.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <initializer_list>

#include "phone_path.h"
#include "src/host/base/log.h"
#include "src/host/base/scoped_fd.h"

namespace {

constexpr mode_t kLogMode = 0740;
constexpr double kStaleSeconds = 172800;
constexpr int kLinkedLogs = 2;

// A link is created under this name and renamed over the one it replaces, so that an index link is
// never missing: without one the next merge would clear the directory.
constexpr char kNewLink[] = "/data/vorn/.new";

bool exists(const VornPath& path) {
  struct stat status;
  return stat(phone_path(path), &status) == 0;
}

void build_index_name(int index, VornPath& name) {
  snprintf(name, sizeof name, "%s/.%04d", kVornDirectory, index);
}

void log_index_name(int index, VornPath& name) {
  build_index_name(index, name);
  LOGE("vorn_get_index_filename: index name %s", name);
}

bool read_link(const VornPath& link, VornPath& target) {
  memset(target, 0, sizeof target);
  return readlink(phone_path(link), target, sizeof target - 1) >= 0;
}

bool is_linked(const VornPath& log) {
  for (int index : {kCurrentIndex, kPreviousIndex}) {
    VornPath link;
    VornPath target;
    build_index_name(index, link);
    if (read_link(link, target) && strcmp(log, target) == 0) return true;
  }
  return false;
}

bool make_link(const VornPath& log, const char* link) {
  if (symlink(log, phone_path(link)) == 0) return true;
  LOGE("vorn_create_new_log: Unable to link %s, errno %d", link, errno);
  return false;
}

bool replace_link(const VornPath& log, const VornPath& link) {
  unlink(phone_path(kNewLink));
  if (!make_link(log, kNewLink)) return false;
  if (rename(phone_path(kNewLink), phone_path(link)) == 0) return true;
  LOGE("vorn_create_new_log: Unable to rename %s, errno %d", kNewLink, errno);
  unlink(phone_path(kNewLink));
  return false;
}

// Without a log the link is deleted. A link that cannot be replaced is deleted and created: with
// the old one, every merge would hand off the same log.
void point_index_to(int index, const VornPath& log, bool has_log) {
  VornPath link;
  build_index_name(index, link);
  if (has_log && replace_link(log, link)) return;
  unlink(phone_path(link));
  if (has_log) make_link(log, link);
}

// Makes `created` the current log and stores the path of the log that no link names afterwards, or
// an empty path. The previous link changes first: after a power cut between the two, every log with
// packages in it must still have a link.
void shift_links(const VornPath& created, VornPath& unlinked) {
  VornPath link;
  VornPath current;
  unlinked[0] = '\0';
  vorn_get_filename(kCurrentIndex, current);
  log_index_name(kCurrentIndex, link);
  bool has_created = exists(created);
  if (exists(current)) {
    vorn_get_filename(kPreviousIndex, unlinked);
    log_index_name(kPreviousIndex, link);
    point_index_to(kPreviousIndex, current, exists(current));
  }
  point_index_to(kCurrentIndex, created, has_created);
}

void dated_name(time_t when, VornPath& name) {
  tm fields = {};  // 1900, 1, 1, 0, 0, 0 when there is no local time
  fields.tm_mday = 1;
  if (const tm* local = localtime(&when)) fields = *local;
  snprintf(name, sizeof name, "%s/vorn_%04d%02d%02d%02d%02d%02d%s", kVornDirectory,
           fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min,
           fields.tm_sec, kVornSuffix);
}

// Two logs created in the same second would share a name, and creating the second would empty the
// first. A name that one of the two kept logs has is skipped.
void next_free_name(VornPath& name) {
  time_t when = time(nullptr);
  dated_name(when, name);
  for (int taken = 0; taken < kLinkedLogs && is_linked(name); ++taken) dated_name(++when, name);
}

bool create_empty(const VornPath& log) {
  ScopedFd file(open(phone_path(log), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, kLogMode));
  if (!file) LOGE("vorn_create_new_log: create new log %s failed, errno %d", log, errno);
  return static_cast<bool>(file);
}

// Resolves the link again for each file; each time is logged.
bool is_kept(const VornPath& path, int index) {
  VornPath target;
  return vorn_get_filename(index, target) == 0 && strcmp(path, target) == 0;
}

void delete_if_stale(const VornPath& path, time_t now) {
  if (is_kept(path, kCurrentIndex) || is_kept(path, kPreviousIndex)) return;
  struct stat status;
  if (stat(phone_path(path), &status) != 0) return;
  if (fabs(difftime(now, status.st_mtime)) < kStaleSeconds) return;
  LOGE("vorn_clean_dir: unexpected %s", path);
  unlink(phone_path(path));
}

// Calls `act` with the path of each entry whose name does not begin with `skipped`; "." and ".."
// are skipped too. False with errno when the directory cannot be opened.
template <typename Act>
bool for_each_entry(char skipped, Act act) {
  DIR* directory = opendir(phone_path(kVornDirectory));
  if (directory == nullptr) return false;
  while (const dirent* entry = readdir(directory)) {
    const char* name = entry->d_name;
    if (strcmp(name, ".") == 0 || strcmp(name, "..") == 0 || name[0] == skipped) continue;
    VornPath path;
    snprintf(path, sizeof path, "%s/%.*s", kVornDirectory,
             static_cast<int>(sizeof path - sizeof kVornDirectory - 1), name);
    act(path);
  }
  closedir(directory);
  return true;
}

}  // namespace

int vorn_get_filename(int index, VornPath& target) {
  VornPath link;
  log_index_name(index, link);
  if (!read_link(link, target)) {
    LOGE("vorn_get_filename: get real name of %s failed, rc %d", link, errno);
    return -1;
  }
  return exists(target) ? 0 : -1;
}

// Some file systems (f2fs) write a changed link to the disk only when its directory is synced.
bool vorn_sync_links() {
  ScopedFd directory(open(phone_path(kVornDirectory), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory && fsync(directory.get()) == 0) return true;
  LOGE("vorn_update_current_log: Unable to sync %s, errno %d", kVornDirectory, errno);
  return false;
}

int vorn_create_new_log(VornPath& name, bool& are_links_synced) {
  VornPath created;
  next_free_name(created);
  if (!create_empty(created)) return -1;
  memcpy(name, created, sizeof name);
  LOGE("vorn_create_new_log: create new %s.", created);

  VornPath unlinked;
  shift_links(created, unlinked);
  are_links_synced = vorn_sync_links();
  // A power cut within a shift leaves both links on one log: it is then the previous one and stays.
  if (!exists(unlinked) || is_linked(unlinked)) return 0;

  unlink(phone_path(unlinked));
  LOGE("vorn_create_new_log: remove old %s", unlinked);
  vorn_clean_dir();
  return 0;
}

void vorn_reset_dir() {
  if (!for_each_entry('~', [](const VornPath& path) { unlink(phone_path(path)); })) {
    LOGE("vorn_reset_dir: can't open %s, errno %d", kVornDirectory, errno);
    return;
  }
  LOGE("vorn_reset_dir DONE!");
}

void vorn_clean_dir() {
  time_t now = time(nullptr);
  if (!for_each_entry('.', [now](const VornPath& path) { delete_if_stale(path, now); })) {
    LOGE("vorn_clean_dir: can't open %s, errno %d", kVornDirectory, errno);
  }
}
