// SPDX-License-Identifier: Apache-2.0
// The vendor service's element read (message 8) and element write (message 9): NV items addressed
// by RDE id, record number and byte offset.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>

constexpr unsigned int kElementRead = 8;
constexpr unsigned int kElementWrite = 9;

constexpr uint32_t kElementDataSize = 512;

// Both requests; a read leaves the data out.
struct ElementRequest {
  uint32_t rde_id;
  uint32_t record;
  uint32_t offset;
  uint32_t length;
  uint32_t data_length;
  uint8_t data[kElementDataSize];
};
static_assert(sizeof(ElementRequest) == 532);
static_assert(offsetof(ElementRequest, data) == 20);

struct ElementReadResponse {
  uint32_t result;  // 0 is success
  uint32_t error;
  uint32_t rde_id;
  uint32_t record;
  uint32_t offset;
  uint32_t length;  // of the data read, as the modem reports it; may exceed kElementDataSize
  uint32_t data_length;
  uint8_t data[kElementDataSize];
};
static_assert(sizeof(ElementReadResponse) == 540);
static_assert(offsetof(ElementReadResponse, length) == 20);
static_assert(offsetof(ElementReadResponse, data) == 28);

struct ElementWriteResponse {
  uint32_t result;  // 0 is success
  uint32_t error;
};
static_assert(sizeof(ElementWriteResponse) == 8);

// Puts at most kElementDataSize bytes into a write request.
inline void set_data(ElementRequest& request, const void* data, uint32_t length) {
  request.length = length;
  request.data_length = length;
  memcpy(request.data, data, length);
}

// The number of data bytes that the response holds: the modem's length as it comes, but not more
// than it can have sent.
inline uint32_t valid_length(const ElementReadResponse& response) {
  return std::min(response.length, kElementDataSize);
}
