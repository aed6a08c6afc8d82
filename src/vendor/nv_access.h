// SPDX-License-Identifier: Apache-2.0
// CDMA-hook requests that read and write the modem's NV items. Each handler takes the whole request
// buffer and the RDE id of its row, writes its own reply and returns 0; a null request is left
// unanswered.
#pragma once

#include <stdint.h>

// Reads the row's item and answers through the NV response table.
int nvRead(const uint8_t* request, uint32_t rde_id);

// Writes the request's data (at most 512 bytes, else status 5) to the row's item.
int nvWrite(const uint8_t* request, uint32_t rde_id);

// Reads the item that the payload names: u32 RDE id, record, offset, length. The reply carries the
// same four and the data read.
int genNvRead(const uint8_t* request, uint32_t unused);

// Writes the item that the payload names: the same four, then the data. More than 512 bytes are
// not sent and not answered.
int genNvWrite(const uint8_t* request, uint32_t unused);
