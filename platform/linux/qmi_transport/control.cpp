// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_transport/control.h"

#include <endian.h>
#include <string.h>

namespace qmi_transport {

std::array<uint8_t, kControlSize> encode_control(const Control& control) {
  qrtr_ctrl_pkt packet{};
  packet.cmd = htole32(control.type);
  packet.server.service = htole32(control.server.service);
  packet.server.instance = htole32(control.server.instance);
  packet.server.node = htole32(control.server.node);
  packet.server.port = htole32(control.server.port);

  std::array<uint8_t, kControlSize> bytes;
  memcpy(bytes.data(), &packet, sizeof(packet));
  return bytes;
}

std::optional<Control> decode_control(std::span<const uint8_t> packet) {
  qrtr_ctrl_pkt content;
  if (packet.size() != sizeof(content)) return std::nullopt;
  memcpy(&content, packet.data(), sizeof(content));
  return Control{le32toh(content.cmd),
                 {le32toh(content.server.service), le32toh(content.server.instance),
                  le32toh(content.server.node), le32toh(content.server.port)}};
}

Status read_announcement(const std::optional<Control>& control, const ServerFilter& filter,
                         Announcement& announcement) {
  using Kind = Announcement::Kind;
  if (!control) return Status::nothing;
  bool is_new = control->type == QRTR_TYPE_NEW_SERVER;
  if (!is_new && control->type != QRTR_TYPE_DEL_SERVER) return Status::nothing;

  const ServerAddress& server = control->server;
  bool is_end = is_new && server == ServerAddress{};  // all zero, as the kernel ends its list
  bool matches = server.service == filter.service && version_of(server.instance) == filter.version;
  if (!is_end && !matches) return Status::nothing;
  announcement = {is_end ? Kind::end_of_list : is_new ? Kind::appeared : Kind::gone, server};
  return Status::ok;
}

}  // namespace qmi_transport
