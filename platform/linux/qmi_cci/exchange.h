// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <span>

#include "platform/linux/qmi_idl/codec.h"
#include "qmi_client.h"

namespace qmi_cci {

// One request that waits for its response. It is on its sender's stack, so an exchange needs no
// memory of its own. Once added to a table it is protected by the lock of the table's owner.
struct Exchange {
  const qmi_idl::Message& expected;
  std::span<uint8_t> structure;  // receives the response

  std::optional<int> result{};        // empty until the exchange is complete
  bool can_read = false;              // the sender waits and may take the reading role
  std::condition_variable changed{};  // there is a result, or the reading role is free
  uint16_t transaction = 0;
  Exchange* next = nullptr;
};

// The exchanges under way. Not thread-safe: the owner holds its lock around every call.
class ExchangeTable {
 public:
  // Assigns a transaction id that is neither 0 nor in use.
  void add(Exchange& exchange);
  void remove(Exchange& exchange);

  // Decodes a response into its exchange. Ignores one that no exchange waits for, such as a late
  // one.
  void complete(std::span<const uint8_t> packet);
  // Completes the exchange of a response that cannot be decoded as malformed.
  void complete_as_malformed(std::span<const uint8_t> packet);
  // Completes all exchanges that have no result yet.
  void fail_all(int result);
  // Wakes one waiting sender, which can take the reading role. False when none waits.
  bool wake_sender();

 private:
  Exchange* find(uint16_t transaction);
  // The exchange that waits for this response, or null.
  Exchange* find_waiting(std::span<const uint8_t> packet);

  Exchange* first_ = nullptr;
  uint16_t last_transaction_ = 0;
};

}  // namespace qmi_cci
