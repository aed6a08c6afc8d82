// SPDX-License-Identifier: Apache-2.0
// The intake of the vendor service's indications.
#pragma once

#include "qmi_client.h"

// Hands one encoded indication of `length` bytes to its handler. Runs on the client library's
// callback thread and writes only to the unsolicited pipe.
void handleUnsolMsg(qmi_client_type client, unsigned int indication_id, void* buffer,
                    unsigned int length, void* callback_data);
