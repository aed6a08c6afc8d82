// SPDX-License-Identifier: Apache-2.0
// Headers and trailers of the frames on the pipes between the daemon and its parent. Sizes and
// offsets are in bytes. Numbers are little-endian, except the id and the length of a generic
// request, which are big-endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace protocol {

// Generic requests and replies: u8 type, u24 id, u32 length.
constexpr size_t kGenericHeaderSize = 8;
constexpr uint8_t kGenericRequestType = 1;
// The length of the reply to a request that nothing serves.
constexpr uint32_t kGenericError = 0xFFFFFFFF;
// The one reply without a header.
constexpr size_t kDataPlmnSize = 568;

// CDMA-hook requests and replies: u32 id, u32 length, u32 status, 6 bytes of code. A reply has a
// trailer of zero bytes.
constexpr size_t kCdmaHeaderSize = 18;
constexpr size_t kCdmaTrailerSize = 2;
constexpr size_t kStatusOffset = 8;
constexpr size_t kCodeOffset = 12;
constexpr size_t kLengthOffset = 4;  // also of generic frames

// Unsolicited frames: u32 format, u32 header size, u32 id, u32 length. In format 0 a u32 status and
// 6 zero bytes follow before the data and 2 zero bytes after it, in format 1 12 zero bytes after
// it.
constexpr uint32_t kUnsolCdmaFormat = 0;
constexpr uint32_t kUnsolGenericFormat = 1;
constexpr uint32_t kUnsolCdmaHeaderSize = 20;  // as the frame states it
constexpr size_t kUnsolHeaderSize = 16;
constexpr size_t kUnsolCdmaDataOffset = 26;
constexpr size_t kUnsolLengthOffset = 12;
constexpr size_t kUnsolStatusOffset = 16;
constexpr size_t kUnsolOverhead = 28;  // of both formats: all bytes that are not data

// The daemon treats the result of one read as one request.
constexpr size_t kMaxRequestBytes = 17408;

// The statuses of replies.
struct Status {
  uint32_t value;
  const char* name;
};
constexpr uint32_t kSuccess = 0;
constexpr uint32_t kFailure = 5;
constexpr uint32_t kNotSupported = 6;
constexpr Status kStatuses[] = {
    {kSuccess, "success"},
    {2, "refused by the modem"},
    {3, "subsidy lock refused"},
    {kFailure, "failure"},
    {kNotSupported, "obsolete or not supported"},
};

}  // namespace protocol
