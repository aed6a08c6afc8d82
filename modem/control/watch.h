// SPDX-License-Identifier: Apache-2.0
// What a connection that watches the modem is told, one JSON object a line. The times are
// nanoseconds of the machine's monotonic clock, which all its processes share.
#pragma once

#include <span>
#include <string>

#include "platform/linux/qmi_idl/descriptor.h"

namespace modem {

// {"message":{"time":...,"service":"qorext","client":3,"packet":"00..."}}
std::string watched_message(const qmi_idl::Service& service, uint64_t client,
                            std::span<const uint8_t> packet);

// {"service":{"time":...,"name":"qorext","up":false}}
std::string watched_service(const qmi_idl::Service& service, bool is_up);

}  // namespace modem
