// SPDX-License-Identifier: Apache-2.0
// The frames that cross the three pipes to the parent, and the rule that separates its two families
// of requests. One read of the request pipe is one request; there is no length prefix.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <utility>

#include "src/host/base/bytes.h"

// Every handler gets the request in a buffer of this size, zero after the bytes read. Lengths in
// requests are not checked against the bytes read: a handler that follows them reads these zeros.
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
// trailing zero bytes.
constexpr size_t kUnsolCdmaData = 26;
constexpr size_t kUnsolGenericData = 16;
constexpr size_t kUnsolOverhead = 28;  // frame size without data

// The status word of a CDMA-hook reply. A generic reply carries it as a data byte.
constexpr uint32_t kStatusSuccess = 0;
constexpr uint32_t kStatusFailure = 5;
constexpr uint32_t kStatusNotSupported = 6;

constexpr uint32_t status_of(bool is_done) { return is_done ? kStatusSuccess : kStatusFailure; }

constexpr uint32_t kUnclassified = 0xFFFFFFFF;

enum HookType : uint32_t { kCdmaHook = 0, kGenericHook = 1 };

struct OemGenHeader {
  uint32_t msgType;
  uint32_t msgId;
  uint32_t msgLen;
};
static_assert(sizeof(OemGenHeader) == 12);

// Returns the request's id and stores its HookType, or returns kUnclassified and stores nothing.
// The CDMA family (0x02xxxxxx) is checked first: its bytes 1 to 3 are 00 00 02. A generic request
// of id 2 is therefore always taken for a CDMA one.
uint32_t getOemHook(const uint8_t* buffer, size_t length, uint32_t* type);

// Parses a generic-hook header of at least 8 bytes. Returns 1, or 0 on a null pointer or fewer.
int ParOemGen(const uint8_t* buffer, size_t length, OemGenHeader* header);

// The request's first four bytes as the logs show them: little-endian, type byte shifted out. Log
// filters match this byte-swapped id, not the parsed one.
int32_t generic_id_for_log(const uint8_t* request);

inline uint32_t cdma_id(const uint8_t* request) { return load_le32(request + kCdmaId); }
inline uint32_t cdma_length(const uint8_t* request) { return load_le32(request + kCdmaLength); }
inline uint32_t generic_length(const uint8_t* request) {
  return load_be32(request + kGenericLength);
}

// A zero-filled buffer on the heap that holds one frame until it has been written.
class Frame {
 public:
  explicit Frame(size_t size) : bytes_(static_cast<uint8_t*>(calloc(1, size))), size_(size) {}
  ~Frame() { free(bytes_); }

  Frame(Frame&& other) noexcept
      : bytes_(std::exchange(other.bytes_, nullptr)), size_(other.size_) {}
  Frame& operator=(Frame&&) = delete;

  // False when there was no memory for it.
  explicit operator bool() const { return bytes_ != nullptr; }

  uint8_t* at(size_t offset) { return bytes_ + offset; }
  const uint8_t* data() const { return bytes_; }
  size_t size() const { return size_; }

 private:
  uint8_t* bytes_;
  size_t size_;
};

// Builds a CDMA-hook reply with its header filled and its data, from kCdmaPayload on, zero. For
// replies that change before they are written; the frame is false when there is no memory for it.
Frame cdma_reply(uint32_t id, uint32_t status, uint32_t data_length);

// The senders below build a frame around `size` bytes of data and write it. They return false, with
// nothing written and nothing logged, when there is no memory for the frame; a write that fails is
// logged and still counts as sent. `data` may be null when `size` is 0.

bool send_cdma_reply(uint32_t id, uint32_t status, const void* data, uint32_t size);

// Replies with the request's header and the data length, here little-endian although the request's
// was big-endian.
bool send_generic_reply(const uint8_t* request, const void* data, uint32_t size);

// Unsolicited messages with a header of the CDMA-hook and of the generic-hook form. `id_bytes`
// is type and 24-bit id: the bytes on the pipe, read as a little-endian number.
bool send_unsolicited_cdma(uint32_t id, const void* data, uint32_t size);
bool send_unsolicited_generic(uint32_t id_bytes, const void* data, uint32_t size);

// Writes a CDMA-hook reply without data.
void send_cdma_status(uint32_t id, uint32_t status);

// Writes a generic reply whose only data is the status byte, which is returned.
uint8_t send_generic_status(const uint8_t* request, uint32_t status);

// Writes the reply to a generic request that cannot be served: its first four bytes, then all ones.
void send_generic_error(const uint8_t* request);
