// SPDX-License-Identifier: Apache-2.0
// The modem without its sockets: requests go in, actions come out of the outbox.
#pragma once

#include <chrono>
#include <deque>
#include <span>

#include "modem/handlers/dispatch.h"
#include "modem/kpi/kpi_upload.h"
#include "modem/simulator/faults.h"

namespace modem {

// A phone with a separate modem chip has the vendor's service on both processors, so it is
// published twice. All instances have the same state.
constexpr uint32_t kMaxInstances = 16;

// The last 10000 requests received.
class RequestLog {
 public:
  void record(const qmi_idl::Service& service, const qmi_idl::Header& header,
              std::span<const uint8_t> tlvs);
  void clear() { requests_.clear(); }
  // An array of {"service", "message", "fields", "time"}, the oldest first.
  nlohmann::json all() const;

 private:
  // Not decoded until all() is called.
  struct Request {
    const qmi_idl::Service* service;
    qmi_idl::Header header;
    Bytes tlvs;
    std::chrono::system_clock::time_point time;

    nlohmann::json as_json() const;
  };

  std::deque<Request> requests_;
};

class Simulator {
 public:
  // A factory reset returns to `start`.
  Simulator(const State& start, uint32_t seed) : device{start, start, {}}, faults(seed) {}

  // Takes one packet of a client of the service. Drops all but requests.
  void receive(const qmi_idl::Service& service, uint64_t peer, std::span<const uint8_t> packet);

  Device device;
  Faults faults;
  RequestLog requests;
  KpiUploads uploads;
  uint32_t instances = 1;  // of the vendor's service
};

}  // namespace modem
