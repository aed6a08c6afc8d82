// SPDX-License-Identifier: Apache-2.0
// The modem without its sockets: requests go in, actions come out of the outbox.
#pragma once

#include <span>

#include "modem/handlers/dispatch.h"
#include "modem/kpi/kpi_upload.h"
#include "modem/messages/request_log.h"
#include "modem/simulator/faults.h"

namespace modem {

// A phone with a modem chip of its own has the vendor's service on both processors: it is published
// twice. All instances are ways to the same state.
constexpr uint32_t kMaxInstances = 16;

class Simulator {
 public:
  // Starts from `start`, which is also what a factory reset brings back.
  Simulator(const State& start, uint32_t seed) : device{start, start, {}}, faults(seed) {}

  // Takes one packet of a client of the service. Anything but a request is dropped.
  void receive(const qmi_idl::Service& service, uint64_t peer, std::span<const uint8_t> packet);

  Device device;
  Faults faults;
  RequestLog requests;
  KpiUploads uploads;
  uint32_t instances = 1;  // of the vendor's service, while it is up
};

}  // namespace modem
