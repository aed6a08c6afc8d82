// SPDX-License-Identifier: Apache-2.0
// The one client of the modem's vendor service (qorext) that the whole process shares.
#pragma once

#include "qmi_client.h"

// Waits for the service, at most 500 seconds, and opens the client. Returns 0, or -1 after logging
// what failed. Called once, by main; the client is never released. Every indication is logged and
// passed to `on_indication` on the client library's callback thread, possibly before this function
// returns.
int qmi_qorext_hook_client_init(qmi_client_ind_cb on_indication);

// How long every exchange with the modem may take.
constexpr unsigned int kModemTimeoutMs = 15000;

// Sends a request and waits for its response, at most 15 seconds. Lengths are the sizes of the C
// structures in bytes; the caller has zeroed both. Returns the client library's code (0 is success)
// unchanged; the caller checks the response's own result. May be called on any thread.
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

// Decodes an encoded indication of `length` bytes into its C structure, which the caller has
// zeroed. Returns the client library's code unchanged.
template <typename Record>
int decode_indication(qmi_client_type client, unsigned int indication_id, const void* buffer,
                      unsigned int length, Record& record) {
  return qmi_client_message_decode(client, QMI_IDL_INDICATION, indication_id, buffer, length,
                                   &record, sizeof record);
}
