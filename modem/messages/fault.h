// SPDX-License-Identifier: Apache-2.0
// A fault of the modem: a wrong answer, or none, to the next requests of a kind.
#pragma once

#include <stdint.h>

#include <string>

#include "modem/state/archive.h"

namespace modem {

constexpr const char* kFaultKinds[] = {
    "silent",  // no answer
    "delay",   // a late answer
    "error",   // a refusal
    "truncated",
    "malformed",    // the first TLV claims more bytes than there are
    "garbage",      // random bytes in place of the TLVs
    "transaction",  // an answer with the id of another transaction
    "stray",        // such an answer, then the right one
    "duplicate",    // the right answer twice
    "close",        // the service is withdrawn and published again
};

struct Fault {
  std::string service = "any";  // "nas", "dms", "qorext" or "any"
  std::string message = "any";  // a request's name, "0x24" for one without a name, or "any"
  std::string kind;             // of kFaultKinds
  uint32_t times = 0;           // requests that it affects; 0: all, until it is removed
  uint32_t delay_ms = 0;        // before each answer
  uint16_t result = 1;          // kind "error"
  uint16_t error = 3;           // kind "error"; 3 is QMI's internal error
  uint32_t bytes = 0;           // kind "truncated": bytes of TLVs that are left
};

// Refuses unknown services, messages and kinds.
void describe(Archive& archive, Fault& fault);

}  // namespace modem
