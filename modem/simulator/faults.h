// SPDX-License-Identifier: Apache-2.0
// Injects the faults that a test or a person asked for.
#pragma once

#include <stdint.h>

#include <optional>
#include <random>
#include <vector>

#include "modem/handlers/dispatch.h"
#include "modem/messages/fault.h"

namespace modem {

// A request and the right answer to it.
struct Exchange {
  const qmi_idl::Service& service;
  const qmi_idl::Header& header;
  uint64_t peer;
  Bytes response;  // empty when serves_request() is false for the fault
};

class Faults {
 public:
  explicit Faults(uint32_t seed) : random_(seed) {}

  void add(Fault fault) { faults_.push_back(std::move(fault)); }
  void clear() { faults_.clear(); }
  std::vector<Fault>& all() { return faults_; }

  // The first fault that matches the request, if any. Counts it down and removes it after its last
  // request.
  std::optional<Fault> take(const qmi_idl::Service& service, uint32_t message_id);

  // Answers the request with the fault.
  void apply(const Fault& fault, Exchange exchange, Outbox& outbox);

 private:
  std::vector<Fault> faults_;
  std::minstd_rand random_;
};

// Whether a request that meets the fault is served, and so changes the modem's state.
bool serves_request(const Fault& fault);

}  // namespace modem
