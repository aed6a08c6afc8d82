// SPDX-License-Identifier: Apache-2.0
// Misbehaviour on request: what the modem does wrong with the next requests of a kind.
#pragma once

#include <stdint.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "modem/handlers/dispatch.h"
#include "modem/state/archive.h"

namespace modem {

struct Fault {
  std::string service = "any";  // "nas", "dms", "qorext" or "any"
  std::string message = "any";  // a request's name, "0x24" for one without a name, or "any"
  std::string kind;
  uint32_t times = 0;     // how many requests it spoils; 0: all, until it is cleared
  uint32_t delay_ms = 0;  // waited before whatever is answered
  uint16_t result = 1;    // kind "error"
  uint16_t error = 3;     // kind "error"; 3 is QMI's internal error
  uint32_t bytes = 0;     // kind "truncated": how many bytes of TLVs are left
};

// Refuses services, messages and kinds that there are not.
void describe(Archive& archive, Fault& fault);

// One request and the right answer to it.
struct Exchange {
  const qmi_idl::Service& service;
  const qmi_idl::Header& header;
  uint64_t peer;
  Bytes response;  // empty when the fault lets nobody serve the request
};

class Faults {
 public:
  explicit Faults(uint32_t seed) : random_(seed) {}

  void add(Fault fault) { faults_.push_back(std::move(fault)); }
  void clear() { faults_.clear(); }
  std::vector<Fault>& all() { return faults_; }

  // The first fault that is meant for this request, counted down; nothing when there is none.
  std::optional<Fault> take(const qmi_idl::Service& service, uint32_t message_id);

  // Answers as the fault wants it.
  void apply(const Fault& fault, Exchange exchange, Outbox& outbox);

 private:
  std::vector<Fault> faults_;
  std::minstd_rand random_;
};

// Whether a request that meets the fault is served at all, and so changes the modem's state.
bool serves_request(const Fault& fault);

}  // namespace modem
