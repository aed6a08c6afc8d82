// SPDX-License-Identifier: Apache-2.0
// The top of the daemon: the request loop, the tables of requests and the table of indications.
// No other folder of src/ includes it.
#pragma once

#include <stdint.h>

#include "qmi_client.h"

// request_loop.cpp

// Serves the parent's requests one at a time until the parent closes its end of the pipe. Failures
// of select and read are logged and tried again, without limit.
void serve_requests(int read_fd);

// dispatch.cpp

// Calls the handler of a generic-hook request by its parsed id; an unknown id gets the 8-byte error
// reply. The request is a whole buffer of kRequestSize bytes.
void dispatch_generic(const uint8_t* request, uint32_t id);

// Offers a CDMA-hook request to the carrier handler, then to the fallback table; an id in neither
// gets a reply of status 6. The carrier handler replies with the request's own header and so
// changes the buffer.
void dispatch_cdma(uint8_t* request, uint32_t id);

// indications.cpp

// Passes one encoded vendor indication of `length` bytes to its handler. Runs on the client
// library's callback thread and writes only to the unsolicited pipe.
void handleUnsolMsg(qmi_client_type client, unsigned int indication_id, void* buffer,
                    unsigned int length, void* callback_data);
