// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay_modem.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

#include "modem/messages/services.h"

namespace qorextctl {

namespace {

const qmi_idl::Service& known(const std::string& name) {
  return *modem::find_service(std::string_view(name));
}

}  // namespace

Result<std::unique_ptr<ReplayModem>> ReplayModem::serve(const std::string& path) {
  auto server = qmi_transport::serve({qmi_transport::Endpoint::Kind::unix_socket, path});
  if (!server) {
    return transport_error(fmt::format("cannot serve the modem at {}: {}", path, strerror(errno)));
  }
  std::unique_ptr<ReplayModem> replayed(new ReplayModem(std::move(server)));
  for (const qmi_idl::Service* service : modem::services()) {
    replayed->move_service(service->name, true);
  }
  return replayed;
}

std::optional<ReplayModem::Request> ReplayModem::next() {
  qmi_transport::ServerEvent event = server_->next(buffer_);
  if (event.kind != qmi_transport::ServerEvent::Kind::packet) return std::nullopt;
  const qmi_idl::Service* service = modem::find_service(event.service);
  if (!service) return std::nullopt;
  auto message = reader_.read(service->name, event.peer, View(buffer_).first(event.size));
  if (!message || message->header.type != qmi_idl::WireType::request) return std::nullopt;
  return Request{std::move(*message), event.peer};
}

void ReplayModem::send_to_all(const std::string& service, View packet) {
  for (uint64_t client : server_->peers(known(service).id)) server_->send(client, packet);
}

void ReplayModem::move_service(const std::string& name, bool is_up) {
  const qmi_idl::Service& service = known(name);
  if (!is_up) return server_->withdraw(service.id);
  server_->publish(service.id, modem::instance_of(service));
}

}  // namespace qorextctl
