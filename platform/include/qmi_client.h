// SPDX-License-Identifier: Apache-2.0
// The QMI common client interface, as libqmi_cci.so exports it: synchronous requests to one service
// of the modem and indications from it. Messages are passed as the C structures that the service
// object describes; the library encodes and decodes them.
#pragma once

#include <pthread.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Result codes: 0 is success, every failure is negative.
enum {
  QMI_NO_ERR = 0,
  QMI_INTERNAL_ERR = -1,       // no memory, no thread
  QMI_SERVICE_ERR = -2,        // no such service, or it has gone away
  QMI_TIMEOUT_ERR = -3,        // no response within the time allowed
  QMI_TRANSPORT_ERR = -4,      // the socket failed
  QMI_MALFORMED_ERR = -5,      // a message that does not match its description
  QMI_INVALID_PARAM_ERR = -6,  // null pointer, unknown message, wrong structure size
};

typedef void* qmi_client_type;
typedef void* qmi_idl_service_object_type;

// One instance of a service, as found by qmi_client_get_service_list. Opaque to the caller.
typedef struct {
  uint32_t opaque[16];
} qmi_service_info;

// The signal that a notifier raises when an instance of its service comes up. The notifier's
// initialisation sets up every member; the caller waits on `cond` under `mutex`.
typedef struct {
  uint32_t sig_set;    // 1 after the signal; the notifier never clears it
  uint32_t timed_out;  // for the caller's use
  uint32_t clock;      // 1: deadlines for `cond` are taken from CLOCK_MONOTONIC
  pthread_cond_t cond;
  pthread_mutex_t mutex;
} qmi_client_os_params;

typedef enum {
  QMI_IDL_REQUEST = 0,
  QMI_IDL_RESPONSE = 1,
  QMI_IDL_INDICATION = 2,
} qmi_idl_type_of_message_type;

// Called on a thread of the library, one indication at a time, in the order of arrival. `buffer`
// holds the encoded message (TLVs, without the QMI header) and is valid until the callback returns.
// Indications that arrive during the callback are queued; beyond the limit of the queue's memory
// the newest are dropped. On a workstation the limit is 64 MiB for each client, or the number of
// bytes in the environment variable QOREXT_INDICATION_QUEUE.
typedef void (*qmi_client_ind_cb)(qmi_client_type client, unsigned int message_id, void* buffer,
                                  unsigned int length, void* callback_data);

// Starts watching for instances of the service. Raises the signal for each instance that comes up
// from now on; those that are up already are in the service list. Released with qmi_client_release.
int qmi_client_notifier_init(qmi_idl_service_object_type service, qmi_client_os_params* signal,
                             qmi_client_type* notifier);

// Stores the number of instances in `services`. With a non-null `list`, `entries` is the size of
// the list on entry and the number of records filled on return. QMI_SERVICE_ERR when there is none.
int qmi_client_get_service_list(qmi_idl_service_object_type service, qmi_service_info* list,
                                unsigned int* entries, unsigned int* services);

// Opens a client of one instance. `callback` may be null: indications are then dropped.
int qmi_client_init(qmi_service_info* info, qmi_idl_service_object_type service,
                    qmi_client_ind_cb callback, void* callback_data, qmi_client_os_params* signal,
                    qmi_client_type* client);

// Ends a client or a notifier. No callback runs after the return.
int qmi_client_release(qmi_client_type client);

// Sends a request and waits for its response. Lengths are sizes of the C structures in bytes; a
// message without a request structure takes null and 0. Several threads may send on one client.
int qmi_client_send_msg_sync(qmi_client_type client, unsigned int message_id, void* request,
                             unsigned int request_length, void* response,
                             unsigned int response_length, unsigned int timeout_ms);

// Decodes an encoded message into its C structure of `decoded_length` bytes.
int qmi_client_message_decode(qmi_client_type client, qmi_idl_type_of_message_type type,
                              unsigned int message_id, const void* buffer, unsigned int length,
                              void* decoded, unsigned int decoded_length);

#ifdef __cplusplus
}
#endif
