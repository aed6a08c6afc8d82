// SPDX-License-Identifier: Apache-2.0
// The one client of the modem's vendor service (qorext) that the whole process shares.
#pragma once

#include "qmi_client.h"

// Brings the client up: waits for the service (at most 500 seconds) and opens it. 0, or -1 after
// logging what failed. Called once, by main; the client is never released. Every indication is
// logged and handed to `on_indication` on the client library's callback thread, possibly before
// this function returns.
int qmi_qorext_hook_client_init(qmi_client_ind_cb on_indication);

// How long every exchange with the modem may take.
constexpr unsigned int kModemTimeoutMs = 15000;

// Sends a request and waits for its response, at most 15 seconds. Lengths are the sizes of the C
// structures in bytes; the caller has zeroed both. Returns the client library's code (0 is success)
// unchanged; the response's own result is for the caller to judge. For any thread.
int qorext_send_msg_sync(unsigned int message_id, void* request, unsigned int request_length,
                         void* response, unsigned int response_length);

// The same for a request and a response of fixed layout; the second form for messages whose request
// is empty.
template <typename Request, typename Response>
int qorext_exchange(unsigned int message_id, Request& request, Response& response) {
  return qorext_send_msg_sync(message_id, &request, sizeof request, &response, sizeof response);
}
template <typename Response>
int qorext_exchange(unsigned int message_id, Response& response) {
  return qorext_send_msg_sync(message_id, nullptr, 0, &response, sizeof response);
}
