// SPDX-License-Identifier: Apache-2.0
#include "src/capture/kpi_store.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include "phone_path.h"
#include "src/capture/kpi_logs.h"
#include "src/host/base/log.h"
#include "src/host/base/scoped_fd.h"

namespace {

constexpr mode_t kDirectoryMode = 0750;
constexpr mode_t kTemporaryMode = 0740;

// These return 0, or errno after logging it.

int make_directory(KpiStore& store) {
  if (store.has_directory) return 0;
  if (mkdir(phone_path(kVornDirectory), kDirectoryMode) != 0 && errno != EEXIST) {
    int error = errno;
    LOGE("vornIndHndlr: create parent dir %s failed, rc %d", kVornDirectory, error);
    return error;
  }
  store.has_directory = true;
  return 0;
}

// On a full disk the first failing write is short and sets no errno.
int write_payload(const ScopedFd& file, const VornPath& path, const KpiPacket& packet,
                  uint32_t skip) {
  ssize_t size = ssize_t{packet.size} - skip;
  ssize_t written = write(file.get(), packet.payload + skip, static_cast<size_t>(size));
  if (written == size) return 0;
  int error = written < 0 ? errno : ENOSPC;
  LOGE("vornIndHndlr: Write to file %s failed, errno %d", path, error);
  return error;
}

int add_to_temporary(const VornPath& path, const KpiPacket& packet, uint32_t skip) {
  int start = packet.sequence_id == kFirstSequence ? O_TRUNC : O_APPEND;
  ScopedFd file(open(phone_path(path), O_RDWR | O_CREAT | O_CLOEXEC | start, kTemporaryMode));
  if (file) return write_payload(file, path, packet, skip);
  int error = errno;
  LOGE("vornIndHndlr: Unable to open %s, errno %d", path, error);
  return error;
}

}  // namespace

void store_kpi_packet(KpiStore& store, KpiReceiver& receiver, const KpiPacket& packet,
                      uint32_t skip) {
  if (packet.sequence_id == kFirstSequence) receiver.lost = 0;
  VornPath path;
  snprintf(path, sizeof path, "%s/~vorn%04d%s", kVornDirectory, packet.package_id, kVornSuffix);

  int error = make_directory(store);
  if (error == 0) error = add_to_temporary(path, packet, skip);
  // A package with a lost packet is received to its end but not merged.
  if (error != 0) receiver.lost = error;
  if (error != 0 || !packet.is_last) return;

  LOGE("vornIndHndlr: received the last pkg of %d", packet.package_id);
  // Reset before the merge: a failure there must not affect the next package.
  int lost = receiver.lost;
  receiver.reset();
  if (lost == 0) {
    vorn_update_current_log(path, store.logs);
  } else {
    LOGE("vorn_update_current_log: Unable to write %s, errno %d", path, lost);
  }
}
