// SPDX-License-Identifier: Apache-2.0
// Reads and writes one NV item of the modem, addressed by RDE index, record number and offset.
#pragma once

#include <stdint.h>

constexpr uint32_t kRdeSuccess = 0;
constexpr uint32_t kRdeFailure = 4;

// Writes `length` bytes, at most 512; more are refused without a message to the modem. kRdeSuccess
// or kRdeFailure.
uint32_t qor_qmi_sprint_rde_write(int32_t index, int32_t record, int32_t offset, uint32_t length,
                                  const void* data);

// Copies the item into `output` and its length in bytes through `length` (may be null). An item
// longer than `max_length`, and a null output, count as success with nothing stored: callers that
// zero their buffers then see a zero value. kRdeSuccess or kRdeFailure.
uint32_t qor_qmi_sprint_rde_read(int32_t index, int32_t record, int32_t offset, void* output,
                                 uint32_t max_length, uint32_t* length);
