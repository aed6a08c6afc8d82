// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <vector>

#include "platform/linux/qmi_idl/descriptor.h"
#include "platform/linux/qmi_transport/transport.h"
#include "qmi_client.h"

namespace qmi_cci {

// The list of servers that the name service sends at the beginning of a watch.
struct ServerList {
  std::vector<qmi_transport::ServerAddress> servers;  // that are up
  bool is_complete = false;  // false: no answer in time, or the name service has gone away
};

// Reads the list of a new watch. Waits up to one second for the name service, or 50 ms when its
// last answer timed out: callers ask repeatedly, and each call would take a second.
ServerList read_list(const qmi_transport::Endpoint& endpoint, qmi_transport::ServiceWatch& watch);

// Records that the name service has answered, so that it has one second again.
void record_answer(const qmi_transport::Endpoint& endpoint);

// The instances of the service, with its version, that are up now. Waits as read_list() does.
// Returns an empty list at once when there is no name service.
std::vector<qmi_transport::ServerAddress> list_servers(const qmi_transport::Endpoint& endpoint,
                                                       const qmi_idl::Service& service);

// Converts an instance to the caller's record of it.
qmi_service_info to_record(const qmi_transport::ServerAddress& server);
// Returns nullopt for a record that to_record() did not make.
std::optional<qmi_transport::ServerAddress> from_record(const qmi_service_info& record);

}  // namespace qmi_cci
