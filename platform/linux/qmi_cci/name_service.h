// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_cci {

// What the name service had to say about one service.
struct ServerList {
  std::vector<qmi_transport::ServerAddress> servers;  // that are up
  bool is_whole = false;  // false: it was silent for too long, or has gone away
};

// Reads the list with which a new watch begins. Waits for the answer a second at most. A name
// service that has let a second pass is given 50 ms from then on, until it answers again: callers
// ask many times, and each of them would wait.
ServerList read_list(const qmi_transport::Endpoint& endpoint, qmi_transport::ServiceWatch& watch);

// The name service has answered, so it is given a second again.
void note_answer(const qmi_transport::Endpoint& endpoint);

}  // namespace qmi_cci
