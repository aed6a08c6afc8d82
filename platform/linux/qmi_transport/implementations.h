// SPDX-License-Identifier: Apache-2.0
// The two implementations of the interface and what they share; contracts as in transport.h.
#pragma once

#include <errno.h>

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

std::unique_ptr<ServiceWatch> unix_watch(const std::string& path, uint32_t service,
                                         uint32_t version);
std::unique_ptr<Channel> unix_channel(const std::string& path, const ServerAddress& server);
std::unique_ptr<Server> unix_serve(const std::string& path, const ServerLimits& limits);

std::unique_ptr<ServiceWatch> qrtr_watch(uint32_t service, uint32_t version);
std::unique_ptr<Channel> qrtr_channel(const ServerAddress& server);
std::unique_ptr<Server> qrtr_serve(const ServerLimits& limits);

// How long opening a channel waits until the other side confirms that the server is up.
constexpr std::chrono::seconds kAttachTimeout{5};

// What the errno value of a socket call means for the other end.
inline Status status_of(int error) {
  switch (error) {
    case EAGAIN:
      return Status::nothing;
    case EPIPE:
    case ENOTCONN:
    case ECONNRESET:
    case ENODEV:
    case ENETRESET:
    case EHOSTUNREACH:
      return Status::gone;
    default:
      return Status::failed;
  }
}

}  // namespace qmi_transport
