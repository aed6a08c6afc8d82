// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <span>

#include "platform/linux/qmi_idl/codec.h"
#include "qmi_client.h"

namespace qmi_cci {

// One request that waits for its response. It lies on its sender's stack, so that an exchange needs
// no memory of its own.
struct Exchange {
  const qmi_idl::Message& expected;
  std::span<uint8_t> structure;  // where the response goes

  std::optional<int> result{};  // nothing: no response yet
  bool can_read = false;        // its sender waits and may take over the reading
  std::condition_variable changed{};
  uint16_t transaction = 0;
  Exchange* next = nullptr;
};

// The exchanges under way. Not locked: the caller holds its own lock around every call.
class ExchangeTable {
 public:
  // Gives the exchange a transaction id that is not 0 and not in use.
  void enter(Exchange& exchange);
  void leave(Exchange& exchange);

  // Decodes a response into the exchange that it belongs to; a late one belongs to none.
  void complete(std::span<const uint8_t> packet);
  // Ends the exchange that a response belongs to, which cannot be decoded, as malformed.
  void refuse(std::span<const uint8_t> packet);
  // Ends all exchanges that have no result yet.
  void fail_all(int result);
  // Wakes one sender to take over the reading; false when none waits.
  bool wake_reader();

 private:
  Exchange* find(uint16_t transaction);
  // The exchange that waits for this response; null when none does.
  Exchange* find_waiting(std::span<const uint8_t> packet);

  Exchange* first_ = nullptr;
  uint16_t last_transaction_ = 0;
};

}  // namespace qmi_cci
