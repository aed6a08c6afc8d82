#include "service_list.h"

#include <poll.h>

#include <algorithm>

#include "qmi_transport/wait.h"

namespace qmi_cci {
namespace {

using qmi_transport::Announcement;
using qmi_transport::ServerAddress;
using qmi_transport::Status;

constexpr std::chrono::seconds kPatience{1};
constexpr uint32_t kRecordMagic = 0x51534931;

void note(std::vector<ServerAddress>& servers, const Announcement& announcement) {
  std::erase(servers, announcement.server);
  if (announcement.kind == Announcement::Kind::appeared) servers.push_back(announcement.server);
}

}  // namespace

std::vector<ServerAddress> list_servers(const qmi_transport::Endpoint& endpoint,
                                        const qmi_idl::Service& service) {
  auto deadline = qmi_transport::in(kPatience);
  auto watch = qmi_transport::watch_service(endpoint, service.id, service.version);
  if (watch == nullptr) return {};

  std::vector<ServerAddress> servers;
  Announcement announcement{};
  while (qmi_transport::wait_for(watch->fd(), POLLIN, deadline)) {
    Status status = watch->next(announcement);
    if (status == Status::nothing) continue;
    if (status != Status::ok || announcement.kind == Announcement::Kind::end_of_list) break;
    note(servers, announcement);
  }
  return servers;
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
