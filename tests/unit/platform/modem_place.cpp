// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/platform/modem_place.h"

#include <linux/qrtr.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test_support {
namespace {

bool kernel_has_qrtr() {
  int fd = socket(AF_QIPCRTR, SOCK_DGRAM, 0);
  if (fd >= 0) close(fd);
  return fd >= 0;
}

std::string text_of(const qmi_transport::Endpoint& endpoint) {
  return endpoint.kind == TransportKind::qrtr ? "qrtr" : "unix:" + endpoint.path;
}

}  // namespace

ModemPlace::ModemPlace(TransportKind kind) : endpoint_{kind, {}} {
  bool is_qrtr = kind == TransportKind::qrtr;
  if (!is_qrtr) endpoint_.path = socket_path();
  if (is_qrtr && !kernel_has_qrtr()) emulation_.emplace("QRTR_EMULATION", folder_.path());
  modem_.emplace("QOREXT_MODEM", text_of(endpoint_));
}

size_t own(const std::string& what) {
  auto entries = std::filesystem::directory_iterator("/proc/self/" + what);
  return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace test_support
