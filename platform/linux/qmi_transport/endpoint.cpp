// SPDX-License-Identifier: Apache-2.0
#include <stdlib.h>

#include "platform/linux/qmi_transport/implementations.h"
#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {
namespace {

constexpr char kDefaultEndpoint[] = "unix:/run/qorext_modem.sock";
constexpr char kUnixPrefix[] = "unix:";

}  // namespace

std::optional<Endpoint> parse_endpoint(const std::string& text) {
  if (text == "qrtr") return Endpoint{Endpoint::Kind::qrtr, {}};
  if (!text.starts_with(kUnixPrefix)) return std::nullopt;
  std::string path = text.substr(sizeof(kUnixPrefix) - 1);
  if (path.empty()) return std::nullopt;
  return Endpoint{Endpoint::Kind::unix_socket, path};
}

std::optional<Endpoint> endpoint_from_environment() {
  const char* text = getenv("QOREXT_MODEM");
  return parse_endpoint(text != nullptr ? text : kDefaultEndpoint);
}

std::unique_ptr<ServiceWatch> watch_service(const Endpoint& endpoint, uint32_t service,
                                            uint32_t version) {
  if (endpoint.kind == Endpoint::Kind::qrtr) return qrtr_watch(service, version);
  return unix_watch(endpoint.path, service, version);
}

std::unique_ptr<Channel> open_channel(const Endpoint& endpoint, const ServerAddress& server) {
  if (endpoint.kind == Endpoint::Kind::qrtr) return qrtr_channel(server);
  return unix_channel(endpoint.path, server);
}

std::unique_ptr<Server> serve(const Endpoint& endpoint, const ServerLimits& limits) {
  if (endpoint.kind == Endpoint::Kind::qrtr) return qrtr_serve(limits);
  return unix_serve(endpoint.path, limits);
}

}  // namespace qmi_transport
