// SPDX-License-Identifier: Apache-2.0
// QMI messages as named fields.
#pragma once

#include <map>
#include <set>

#include "platform/linux/qmi_idl/codec.h"
#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

struct QmiMessage {
  const qmi_idl::Service* service = nullptr;
  qmi_idl::Header header{};
  std::string name;  // "element_read", or the number of a message that is not described
  Json fields;       // null where the message does not match its description
  Bytes packet;      // with its header
  bool is_personal = false;
  bool masked = false;
};

// "qorext element_read request".
std::string title_of(const QmiMessage& message);

// The values of personal fields become kMasked; the packet's TLVs are shown by nobody then.
void mask(QmiMessage& message);
// Of a masked message only the header is shown.
std::string hex_of(const QmiMessage& message);

// Takes the messages of one modem in their order: whose data a response carries is told by its
// request, too.
class QmiReader {
 public:
  // Nothing when the modem has no such service, or the packet is no QMI message.
  std::optional<QmiMessage> read(const std::string& service, uint64_t client, View packet);

 private:
  using Asked = std::pair<const qmi_idl::Service*, uint64_t>;
  bool is_personal(const QmiMessage& message, uint64_t client);

  std::map<Asked, std::set<uint16_t>> personal_;  // transactions that are about personal data
};

// The daemon's main thread sends every request but these, by name and fields: a thread of its own
// tells how the saving of the hand-off block went.
bool tells_of_block_save(const std::string& name, const Json& fields);

}  // namespace qorextctl
