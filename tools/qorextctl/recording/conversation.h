// SPDX-License-Identifier: Apache-2.0
// What goes between parent, daemon and modem, decoded in its order: a request determines what its
// reply or response holds.
#pragma once

#include <map>
#include <optional>
#include <set>

#include "platform/linux/qmi_idl/codec.h"
#include "tools/qorextctl/frames/frame_kind.h"
#include "tools/qorextctl/frames/frames.h"

namespace qorextctl {

// The frames of one daemon.
class FrameReader {
 public:
  DecodedFrame read(FrameKind kind, View frame);

  // The reply to the last request; nothing before the first one.
  const std::optional<Expected>& expected() const { return expected_; }

 private:
  std::optional<Expected> expected_;
};

struct QmiMessage {
  const qmi_idl::Service* service = nullptr;
  qmi_idl::Header header{};
  std::string name;  // "element_read"; the id where there is no description
  Json fields;       // null when the message does not match its description
  Bytes packet;      // with its header
  bool is_personal = false;
  bool masked = false;
};

// "qorext element_read request".
std::string title_of(const QmiMessage& message);

// Replaces the values of personal fields with kMasked.
void mask(QmiMessage& message);
// The packet in hexadecimal. In a masked personal message, all after the header is mask characters.
std::string hex_of(const QmiMessage& message);

// The messages of one modem.
class MessageReader {
 public:
  // Returns nothing when the modem has no such service or the packet is not a QMI message.
  std::optional<QmiMessage> read(const std::string& service, uint64_t client, View packet);

 private:
  using Client = std::pair<const qmi_idl::Service*, uint64_t>;
  bool is_personal(const QmiMessage& message, uint64_t client);

  std::map<Client, std::set<uint16_t>> personal_;  // transactions about personal data
};

// Whether a request with this name and these fields reports the result of saving the hand-off
// block. It is the only one that does not come from the daemon's main thread.
bool is_block_save_result(const std::string& name, const Json& fields);

}  // namespace qorextctl
