// SPDX-License-Identifier: Apache-2.0
// What the daemon does after a crash and for the modem's logs: the panic notice, the HOB save and
// the intake of KPI packets.
#pragma once

#include <stdint.h>

#include "qmi_client.h"

// Checks whether this boot follows a crash of the kernel or of the modem. If so, the modem is
// notified and verifies the SIM PIN itself, so that the user is not prompted for it again. Returns
// 0 when no notice was due or it was sent, -1 when it could not be sent.
int notify_auto_verify_sim_pin();

// The hand-off block (HOB) is 32 KiB of the modem's RAM that the next boot needs. It is saved to a
// partition when the modem requests it; only instance 0 does that.

// Notifies the modem that save requests can be received. Returns the exchange's result.
int send_hob_ready();

// Vendor indication 0x13: starts a detached thread that saves the block and reports the outcome to
// the modem. Returns 0.
int hobSaveIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                    unsigned int length, void* callback_data);

// The thread's function: saves the block, or refuses while another save runs, and reports the
// outcome to the modem. Argument and result are null.
void* dhob_write(void* unused);

// Takes one KPI packet of kUtilityDataSize bytes: stores it in its package's file, or forwards it
// to the parent. A payload size beyond the packet's end reads zeros. Runs on the client library's
// callback thread.
void vornIndHndlr(const uint8_t* packet);
