// SPDX-License-Identifier: Apache-2.0
// The modem's hand-off block: 32 KiB of its RAM that the next boot needs, saved to a partition when
// the modem asks for it. Only instance 0 takes part.
#pragma once

#include "qmi_client.h"

// Tells the modem that save requests can be received; the exchange's result.
int send_hob_ready();

// Vendor indication 0x13: starts a detached thread that saves the block and reports to the modem.
// Returns 0.
int hobSaveIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                    unsigned int length, void* callback_data);

// The thread: saves the block, or refuses while another save runs, and tells the modem. Its
// argument and result are null.
void* dhob_write(void* unused);
