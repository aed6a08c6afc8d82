// SPDX-License-Identifier: Apache-2.0
// Frames on the parent's pipes, built byte by byte without the tool's code.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "tools/qorextctl/base/bytes.h"

namespace e2e {

using qorextctl::Bytes;
using Texts = std::vector<std::string>;

constexpr size_t kMaxRequestBytes = 17408;  // of one read of the daemon
constexpr uint32_t kNvWrite = 0x02000015;
constexpr uint32_t kNvRead = 0x02000016;
constexpr uint32_t kUnknownId = 0x02000014;

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline Texts operator+(Texts left, const Texts& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// Parses pairs of digits; blanks between pairs are skipped.
inline Bytes hex(const std::string& digits) { return qorextctl::parse_hex(digits).value(); }

// Frames are compared in this form because it is readable in a failure message.
inline std::string as_hex(const Bytes& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

inline Bytes zeros(size_t size) { return Bytes(size); }

inline Bytes characters(const std::string& text) { return {text.begin(), text.end()}; }

// The text, padded with zeros to `size` bytes.
inline Bytes padded(const std::string& text, size_t size) {
  Bytes bytes = characters(text);
  bytes.resize(size);
  return bytes;
}

// 0, 1, 2, ... 255, 0, 1, ...
inline Bytes counting(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i);
  return bytes;
}

inline Bytes le16(uint32_t value) {
  return {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)};
}

inline Bytes le32(uint32_t value) { return le16(value) + le16(value >> 16); }

inline Bytes words(std::initializer_list<uint32_t> values) {
  Bytes bytes;
  for (uint32_t value : values) bytes = bytes + le32(value);
  return bytes;
}

// A CDMA-hook request: id, stated length, status, code field, payload.
inline Bytes cdma_claiming(uint32_t id, uint32_t length, const Bytes& payload = {},
                           const std::string& code = "") {
  return le32(id) + le32(length) + le32(0) + padded(code, 6) + payload;
}

inline Bytes cdma(uint32_t id, const Bytes& payload = {}, const std::string& code = "") {
  return cdma_claiming(id, static_cast<uint32_t>(payload.size()), payload, code);
}

inline Bytes nv_read(uint32_t rde_id, uint32_t record = 0, uint32_t offset = 0,
                     uint32_t length = 0) {
  return cdma(kNvRead, words({rde_id, record, offset, length}));
}

inline Bytes nv_write(uint32_t rde_id, const Bytes& data, uint32_t record = 0,
                      uint32_t offset = 0) {
  return cdma(kNvWrite, words({rde_id, record, offset, static_cast<uint32_t>(data.size())}) + data);
}

// A reply with a header that the daemon has built.
inline Bytes reply(uint32_t id, uint32_t status, const Bytes& data = {}) {
  return le32(id) + le32(static_cast<uint32_t>(data.size())) + le32(status) + zeros(6) + data +
         zeros(2);
}

// A reply with the request's header. The code field is unchanged; without data, so are the two
// bytes after it.
inline Bytes echo(const Bytes& request, uint32_t status, const Bytes& data = {}) {
  auto bytes = [whole = request + zeros(2)](ptrdiff_t from, ptrdiff_t to) {
    return Bytes(whole.begin() + from, whole.begin() + to);
  };
  Bytes head = bytes(0, 4) + le32(static_cast<uint32_t>(data.size())) + le32(status);
  if (data.empty()) return head + bytes(12, 20);
  return head + bytes(12, 18) + data + zeros(2);
}

// A generic-hook request: type 1, 24-bit id and length big-endian, payload.
inline Bytes generic(uint32_t id, const Bytes& payload = {}) {
  auto byte = [](size_t value, unsigned shift) { return static_cast<uint8_t>(value >> shift); };
  Bytes header = {1, byte(id, 16), byte(id, 8), byte(id, 0)};
  for (unsigned shift : {24U, 16U, 8U, 0U}) header.push_back(byte(payload.size(), shift));
  return header + payload;
}

// Its reply, whose length is little-endian.
inline Bytes generic_reply(uint32_t id, const Bytes& data) {
  Bytes header = generic(id);
  return Bytes(header.begin(), header.begin() + 4) + le32(static_cast<uint32_t>(data.size())) +
         data;
}

// The reply to a successful nv_read() of a whole item.
inline Bytes nv_item(uint32_t rde_id, const Bytes& data) {
  auto size = static_cast<uint32_t>(data.size());
  return reply(kNvRead, 0, words({rde_id, 0, 0, size}) + data + zeros(4));
}

// Unsolicited messages, in their two formats.
inline Bytes cdma_message(uint32_t id, const Bytes& data) {
  return le32(0) + le32(20) + le32(id) + le32(static_cast<uint32_t>(data.size())) + le32(0) +
         zeros(6) + data + zeros(2);
}

inline Bytes generic_message(const Bytes& id, const Bytes& data) {
  return le32(1) + le32(8) + id + le32(static_cast<uint32_t>(data.size())) + data + zeros(12);
}

}  // namespace e2e
