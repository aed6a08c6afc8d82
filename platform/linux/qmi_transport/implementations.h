// SPDX-License-Identifier: Apache-2.0
// The two implementations behind the interface; contracts as in transport.h.
#pragma once

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

std::unique_ptr<ServiceWatch> unix_watch(const std::string& path, uint32_t service,
                                         uint32_t version);
std::unique_ptr<Channel> unix_channel(const std::string& path, const ServerAddress& server);
std::unique_ptr<Server> unix_serve(const std::string& path, const ServerLimits& limits);

std::unique_ptr<ServiceWatch> qrtr_watch(uint32_t service, uint32_t version);
std::unique_ptr<Channel> qrtr_channel(const ServerAddress& server);
std::unique_ptr<Server> qrtr_serve(const ServerLimits& limits);

// How long opening a channel waits for the other side's word that the server is there.
constexpr std::chrono::seconds kAttachPatience{5};

}  // namespace qmi_transport
