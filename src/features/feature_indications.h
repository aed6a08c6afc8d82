// SPDX-License-Identifier: Apache-2.0
// Modem features that report by themselves. Both run on the client library's callback thread, take
// an encoded indication of `length` bytes and return 0.
#pragma once

#include "qmi_client.h"

// Vendor indication 0x0F: by its type an unsolicited message, a system property or a KPI packet.
int utilsIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                  unsigned int length, void* callback_data);

// Vendor indication 0x10C: a 32-byte coverage report, passed on as it is.
int sigcovIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                   unsigned int length, void* callback_data);
