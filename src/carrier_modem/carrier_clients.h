// SPDX-License-Identifier: Apache-2.0
// The clients of the modem's standard services that carrier requests need: NAS and DMS.
#pragma once

#include "qmi_client.h"

// Opens the NAS and then the DMS client; five attempts each. Returns 0, or the last failure of the
// first service that could not be opened. Called once, by main; the clients are never released.
int qmi_qorext_sprint_client_init();

constexpr int kNasService = 1;
constexpr int kDmsService = 2;

// Opens one client. Any other service type fails with -1 after five attempts.
int qmi_qorext_sprint_client_init_with_type(qmi_idl_service_object_type service, int service_type);

// Send a request and wait for its response, at most 15 seconds; lengths are the sizes of the C
// structures in bytes. Return the client library's code unchanged, or -1 when the client has not
// been opened.
int qmi_qorext_sprint_nas_send_msg_sync(unsigned int message_id, void* request,
                                        unsigned int request_length, void* response,
                                        unsigned int response_length);
int qmi_qorext_sprint_dms_send_msg_sync(unsigned int message_id, void* request,
                                        unsigned int request_length, void* response,
                                        unsigned int response_length);

// The same for a request and a response of fixed layout; the second form for messages whose request
// is empty.
template <typename Request, typename Response>
int nas_exchange(unsigned int message_id, Request& request, Response& response) {
  return qmi_qorext_sprint_nas_send_msg_sync(message_id, &request, sizeof request, &response,
                                             sizeof response);
}
template <typename Response>
int nas_exchange(unsigned int message_id, Response& response) {
  return qmi_qorext_sprint_nas_send_msg_sync(message_id, nullptr, 0, &response, sizeof response);
}
template <typename Request, typename Response>
int dms_exchange(unsigned int message_id, Request& request, Response& response) {
  return qmi_qorext_sprint_dms_send_msg_sync(message_id, &request, sizeof request, &response,
                                             sizeof response);
}
