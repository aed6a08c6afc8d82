// SPDX-License-Identifier: Apache-2.0
// Where a test's modem is: one place for each transport.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <optional>
#include <ostream>
#include <thread>

#include "platform/linux/qmi_transport/transport.h"
#include "tests/unit/platform/temp_folder.h"

namespace qmi_transport {

inline void PrintTo(Endpoint::Kind kind, std::ostream* out) {
  *out << (kind == Endpoint::Kind::qrtr ? "qrtr" : "unix_socket");
}

}  // namespace qmi_transport

namespace test_support {

using TransportKind = qmi_transport::Endpoint::Kind;

// Names the modem's endpoint in QOREXT_MODEM for its lifetime.
class ModemPlace {
 public:
  explicit ModemPlace(TransportKind kind);

  const qmi_transport::Endpoint& endpoint() const { return endpoint_; }
  std::string socket_path() const { return folder_ / "modem"; }

 private:
  TempFolder folder_;
  qmi_transport::Endpoint endpoint_;
  std::optional<ScopedEnv> modem_;
  std::optional<ScopedEnv> emulation_;
};

inline std::string kind_name(const testing::TestParamInfo<TransportKind>& info) {
  return testing::PrintToString(info.param);
}

inline auto every_transport() {
  return testing::Values(TransportKind::unix_socket, TransportKind::qrtr);
}

// Longer than anything that works can take, even on a loaded machine under a sanitizer.
constexpr std::chrono::seconds kPatience{20};

// Looks again and again whether something has become true.
template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds patience = kPatience) {
  auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// How many entries a folder of /proc/self has: "fd" for descriptors, "task" for threads.
size_t own(const std::string& what);

}  // namespace test_support
