// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <vector>

#include "platform/linux/qmi_idl/descriptor.h"
#include "platform/linux/qmi_transport/transport.h"
#include "qmi_client.h"

namespace qmi_cci {

// The instances of the service (of its version) that are up now. Asks the name service and waits
// for its answer as read_list() does; empty at once when there is no name service.
std::vector<qmi_transport::ServerAddress> list_servers(const qmi_transport::Endpoint& endpoint,
                                                       const qmi_idl::Service& service);

// What a caller's record of an instance holds.
qmi_service_info to_record(const qmi_transport::ServerAddress& server);
// Nothing for a record that to_record() has not made.
std::optional<qmi_transport::ServerAddress> from_record(const qmi_service_info& record);

}  // namespace qmi_cci
