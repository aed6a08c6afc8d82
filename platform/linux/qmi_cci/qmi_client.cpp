// SPDX-License-Identifier: Apache-2.0
// The exported functions: they check the arguments and convert exceptions to result codes.
#include "qmi_client.h"

#include <algorithm>

#include "platform/linux/qmi_cci/client.h"
#include "platform/linux/qmi_cci/name_service.h"
#include "platform/linux/qmi_cci/notifier.h"

using namespace qmi_cci;

namespace {

template <typename Work>
int catch_all(Work work) noexcept {
  try {
    return work();
  } catch (...) {
    return QMI_INTERNAL_ERR;
  }
}

bool fits(const void* data, size_t length) { return data != nullptr || length == 0; }

std::span<const uint8_t> bytes(const void* data, size_t length) {
  return std::span(static_cast<const uint8_t*>(data), length);
}
std::span<uint8_t> bytes(void* data, size_t length) {
  return std::span(static_cast<uint8_t*>(data), length);
}

std::optional<qmi_idl::Direction> direction_of(qmi_idl_type_of_message_type type) {
  switch (type) {
    case QMI_IDL_REQUEST:
      return qmi_idl::Direction::request;
    case QMI_IDL_RESPONSE:
      return qmi_idl::Direction::response;
    case QMI_IDL_INDICATION:
      return qmi_idl::Direction::indication;
  }
  return std::nullopt;
}

// Returns the number of records stored, at most `room`.
unsigned int fill(qmi_service_info* list, unsigned int room,
                  const std::vector<qmi_transport::ServerAddress>& servers) {
  auto count = std::min<size_t>(room, servers.size());
  std::transform(servers.begin(), servers.begin() + static_cast<ptrdiff_t>(count), list, to_record);
  return static_cast<unsigned int>(count);
}

}  // namespace

int qmi_client_notifier_init(qmi_idl_service_object_type service, qmi_client_os_params* signal,
                             qmi_client_type* notifier) {
  if (service == nullptr || signal == nullptr || notifier == nullptr) return QMI_INVALID_PARAM_ERR;
  *notifier = nullptr;
  return catch_all([&]() -> int {
    auto endpoint = qmi_transport::endpoint_from_environment();
    if (!endpoint) return QMI_TRANSPORT_ERR;
    install(std::make_shared<Notifier>(*endpoint, qmi_idl::service_of(service), *signal), notifier);
    return QMI_NO_ERR;
  });
}

int qmi_client_get_service_list(qmi_idl_service_object_type service, qmi_service_info* list,
                                unsigned int* entries, unsigned int* services) {
  if (service == nullptr || services == nullptr) return QMI_INVALID_PARAM_ERR;
  if (list != nullptr && entries == nullptr) return QMI_INVALID_PARAM_ERR;
  *services = 0;
  return catch_all([&]() -> int {
    auto endpoint = qmi_transport::endpoint_from_environment();
    if (!endpoint) return QMI_TRANSPORT_ERR;
    auto servers = list_servers(*endpoint, qmi_idl::service_of(service));
    *services = static_cast<unsigned int>(servers.size());
    if (list != nullptr) *entries = fill(list, *entries, servers);
    return servers.empty() ? QMI_SERVICE_ERR : QMI_NO_ERR;
  });
}

int qmi_client_init(qmi_service_info* info, qmi_idl_service_object_type service,
                    qmi_client_ind_cb callback, void* callback_data, qmi_client_os_params*,
                    qmi_client_type* client) {
  if (info == nullptr || service == nullptr || client == nullptr) return QMI_INVALID_PARAM_ERR;
  *client = nullptr;
  return catch_all([&]() -> int {
    const qmi_idl::Service& description = qmi_idl::service_of(service);
    auto server = from_record(*info);
    if (!server || server->service != description.id) return QMI_INVALID_PARAM_ERR;
    auto endpoint = qmi_transport::endpoint_from_environment();
    if (!endpoint) return QMI_TRANSPORT_ERR;
    auto channel = qmi_transport::open_channel(*endpoint, *server);
    if (channel == nullptr) return QMI_SERVICE_ERR;
    Callback target{callback, callback_data};
    install(std::make_shared<Client>(std::move(channel), description, target), client);
    return QMI_NO_ERR;
  });
}

int qmi_client_release(qmi_client_type client) {
  return catch_all([&]() -> int { return release(client) ? QMI_NO_ERR : QMI_INVALID_PARAM_ERR; });
}

int qmi_client_send_msg_sync(qmi_client_type client, unsigned int message_id, void* request,
                             unsigned int request_length, void* response,
                             unsigned int response_length, unsigned int timeout_ms) {
  if (!fits(request, request_length) || !fits(response, response_length)) {
    return QMI_INVALID_PARAM_ERR;
  }
  return catch_all([&]() -> int {
    auto sender = find<Client>(client);
    if (sender == nullptr) return QMI_INVALID_PARAM_ERR;
    return sender->send(message_id, bytes(const_cast<const void*>(request), request_length),
                        bytes(response, response_length), std::chrono::milliseconds(timeout_ms));
  });
}

int qmi_client_message_decode(qmi_client_type client, qmi_idl_type_of_message_type type,
                              unsigned int message_id, const void* buffer, unsigned int length,
                              void* decoded, unsigned int decoded_length) {
  if (!fits(buffer, length) || !fits(decoded, decoded_length)) return QMI_INVALID_PARAM_ERR;
  return catch_all([&]() -> int {
    auto decoder = find<Client>(client);
    auto direction = direction_of(type);
    if (decoder == nullptr || !direction) return QMI_INVALID_PARAM_ERR;
    const qmi_idl::Message* message = qmi_idl::find(decoder->service(), *direction, message_id);
    if (message == nullptr || message->size != decoded_length) return QMI_INVALID_PARAM_ERR;
    bool matches = qmi_idl::decode(*message, bytes(buffer, length), bytes(decoded, decoded_length));
    return matches ? QMI_NO_ERR : QMI_MALFORMED_ERR;
  });
}
