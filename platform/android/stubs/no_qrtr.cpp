// SPDX-License-Identifier: Apache-2.0
// The platform has no libqrtr: an endpoint other than unix:PATH is refused.
#include <errno.h>

#include "platform/linux/qmi_transport/implementations.h"

namespace qmi_transport {
namespace {

std::nullptr_t unsupported() {
  errno = EAFNOSUPPORT;
  return nullptr;
}

}  // namespace

std::unique_ptr<ServiceWatch> qrtr_watch(uint32_t, uint32_t) { return unsupported(); }
std::unique_ptr<Channel> qrtr_channel(const ServerAddress&) { return unsupported(); }
std::unique_ptr<Server> qrtr_serve(const ServerLimits&) { return unsupported(); }

}  // namespace qmi_transport
