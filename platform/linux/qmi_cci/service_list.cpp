// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/service_list.h"

#include "platform/linux/qmi_cci/name_service.h"

namespace qmi_cci {
namespace {

using qmi_transport::ServerAddress;

constexpr uint32_t kRecordMagic = 0x51534931;

}  // namespace

std::vector<ServerAddress> list_servers(const qmi_transport::Endpoint& endpoint,
                                        const qmi_idl::Service& service) {
  auto watch = qmi_transport::watch_service(endpoint, service.id, service.version);
  return watch != nullptr ? read_list(endpoint, *watch).servers : std::vector<ServerAddress>{};
}

qmi_service_info to_record(const ServerAddress& server) {
  return {{kRecordMagic, server.service, server.instance, server.node, server.port}};
}

std::optional<ServerAddress> from_record(const qmi_service_info& record) {
  const uint32_t* words = record.opaque;
  if (words[0] != kRecordMagic) return std::nullopt;
  return ServerAddress{words[1], words[2], words[3], words[4]};
}

}  // namespace qmi_cci
