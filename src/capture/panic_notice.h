// SPDX-License-Identifier: Apache-2.0
// After a crash of kernel or modem the modem verifies the SIM PIN by itself, so that the user is
// not asked for it again.
#pragma once

// Finds out whether this boot follows a crash and if so tells the modem. 0 when nothing had to be
// sent or it was sent, -1 when it could not be.
int notify_auto_verify_sim_pin();
