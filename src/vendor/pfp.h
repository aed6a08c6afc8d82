// SPDX-License-Identifier: Apache-2.0
// The modem's PFP table: asked for with a CDMA-hook request, delivered later as an indication.
#pragma once

#include <stdint.h>

#include "qmi_client.h"

// CDMA-hook 0x0200001C: asks for the table. The reply's status tells only whether the request could
// be sent, not what the modem answered. A null request is answered with id 0. Returns 0.
int myPfpRequest(const uint8_t* request, uint32_t argument);

// Vendor indication 0x0A: passes the decoded table on to the parent, unread but for the log.
// Returns 0.
int pfpIndication(qmi_client_type client, unsigned int indication_id, void* buffer,
                  unsigned int length, void* callback_data);
