// SPDX-License-Identifier: Apache-2.0
// Where the KPI packets of the utility indication go.
#pragma once

#include <stdint.h>

// Takes one packet of kUtilityDataSize bytes: stores it in its package's file, or forwards it to
// the parent. A payload size beyond the packet's end reads zeros. Runs on the client library's
// callback thread.
void vornIndHndlr(const uint8_t* packet);
