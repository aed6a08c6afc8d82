#include "capture/kpi_store.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include "capture/kpi_logs.h"
#include "host/log.h"
#include "host/scoped_fd.h"
#include "phone_path.h"

namespace {

constexpr mode_t kDirectoryMode = 0750;
constexpr mode_t kTemporaryMode = 0740;

bool make_directory(KpiStore& store) {
  if (store.has_directory) return true;
  if (mkdir(phone_path(kVornDirectory), kDirectoryMode) != 0 && errno != EEXIST) {
    LOGE("vornIndHndlr: create parent dir %s failed, rc %d", kVornDirectory, errno);
    return false;
  }
  store.has_directory = true;
  return true;
}

ScopedFd open_temporary(const VornPath& path, const KpiPacket& packet) {
  int start = packet.sequence_id == kFirstSequence ? O_TRUNC : O_APPEND;
  int fd = open(phone_path(path), O_RDWR | O_CREAT | O_CLOEXEC | start, kTemporaryMode);
  if (fd < 0) LOGE("vornIndHndlr: Unable to open %s, errno %d", path, errno);
  return ScopedFd(fd);
}

bool write_payload(const ScopedFd& file, const VornPath& path, const KpiPacket& packet,
                   uint32_t skip) {
  ssize_t size = ssize_t{packet.size} - skip;
  if (write(file.get(), packet.payload + skip, static_cast<size_t>(size)) == size) return true;
  LOGE("vornIndHndlr: Write to file %s failed, errno %d", path, errno);
  return false;
}

}  // namespace

void store_kpi_packet(KpiStore& store, KpiReceiver& receiver, const KpiPacket& packet,
                      uint32_t skip) {
  if (!make_directory(store)) return;

  VornPath path;
  snprintf(path, sizeof path, "%s/~vorn%04d%s", kVornDirectory, packet.package_id, kVornSuffix);
  ScopedFd file = open_temporary(path, packet);
  if (!file || !write_payload(file, path, packet, skip) || !packet.is_last) return;

  LOGE("vornIndHndlr: received the last pkg of %d", packet.package_id);
  receiver.reset();
  vorn_update_current_log(path, store.handed_off);
}
