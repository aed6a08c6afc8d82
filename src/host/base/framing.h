// SPDX-License-Identifier: Apache-2.0
// The frames that cross the three pipes to the parent, and the rule that tells its two families of
// requests apart. One read of the request pipe is one request; there is no length prefix.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "src/host/base/bytes.h"
#include "src/host/base/frame.h"

// Every handler gets the request in a buffer of this size, zero behind the bytes read.
constexpr size_t kRequestSize = 17408;

// Generic-hook request: u8 type, 24-bit id, u32 payload length, all big-endian; then the payload.
constexpr size_t kGenericId = 1;
constexpr size_t kGenericLength = 4;
constexpr size_t kGenericHeaderSize = 8;
constexpr size_t kGenericPayload = kGenericHeaderSize;

// CDMA-hook request and reply: u32 id, u32 data length, u32 status, a code of six characters, then
// the data; little-endian. A reply ends in two more zero bytes.
constexpr size_t kCdmaId = 0;
constexpr size_t kCdmaLength = 4;
constexpr size_t kCdmaStatus = 8;
constexpr size_t kCdmaCode = 12;
constexpr size_t kCdmaPayload = 18;
constexpr size_t kCdmaReplySize = 20;  // without data

// Unsolicited messages: u32 header format, u32 header size, a header of that format, the data and
// zero bytes that fill the frame up to 28 bytes more than the data.
constexpr size_t kUnsolCdmaData = 26;
constexpr size_t kUnsolGenericData = 16;

constexpr uint32_t kStatusSuccess = 0;
constexpr uint32_t kStatusFailure = 5;
constexpr uint32_t kStatusNotSupported = 6;

constexpr uint32_t kUnclassified = 0xFFFFFFFF;

enum HookType : uint32_t { kCdmaHook = 0, kGenericHook = 1 };

struct OemGenHeader {
  uint32_t msgType;
  uint32_t msgId;
  uint32_t msgLen;
};
static_assert(sizeof(OemGenHeader) == 12);

// Returns the request's id and stores its HookType, or returns kUnclassified and stores nothing.
// Ids of the CDMA family (0x02xxxxxx) are told first, by their bytes 1 to 3 being 00 00 02: a
// generic request of id 2 can never be served.
uint32_t getOemHook(const uint8_t* buffer, size_t length, uint32_t* type);

// Parses a generic-hook header of at least 8 bytes. Returns 1, or 0 on a null pointer or fewer.
int ParOemGen(const uint8_t* buffer, size_t length, OemGenHeader* header);

// The request's first four bytes as the logs show them: little-endian, type byte shifted out. It is
// the byte-swapped id that engineers' log filters look for, not the parsed one.
int32_t generic_id_for_log(const uint8_t* request);

inline uint32_t cdma_id(const uint8_t* request) { return load_le32(request + kCdmaId); }
inline uint32_t cdma_length(const uint8_t* request) { return load_le32(request + kCdmaLength); }
inline uint32_t generic_length(const uint8_t* request) {
  return load_be32(request + kGenericLength);
}

// The frame builders below fill the header and leave the data zero. The frame is empty (false) when
// there is no memory for it.

// A CDMA-hook reply; data from kCdmaPayload.
Frame cdma_reply(uint32_t id, uint32_t status, uint32_t data_length);

// A generic-hook reply: the request's header with the data length, here little-endian although the
// request's was big-endian; data from kGenericPayload.
Frame generic_reply(const uint8_t* request, uint32_t data_length);

// An unsolicited message in the CDMA-hook form; data from kUnsolCdmaData.
Frame unsolicited_cdma(uint32_t id, uint32_t data_length);

// An unsolicited message in the generic-hook form; `id_bytes` holds type and 24-bit id as they lie
// on the pipe, read as a little-endian word; data from kUnsolGenericData.
Frame unsolicited_generic(uint32_t id_bytes, uint32_t data_length);

// Writes a CDMA-hook reply without data.
void send_cdma_status(uint32_t id, uint32_t status);

// Writes the answer to a generic request that cannot be served: its first four bytes, then all
// ones.
void send_generic_error(const uint8_t* request);
