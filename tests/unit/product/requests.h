// SPDX-License-Identifier: Apache-2.0
// Requests as the parent writes them, in a buffer as the request loop hands it to handlers.
#pragma once

#include <string>

#include "src/host/base/bytes.h"
#include "src/host/base/framing.h"
#include "tests/unit/product/fake_phone.h"

class Request {
 public:
  static Request cdma(uint32_t id, const Bytes& payload = {}) {
    Request request;
    store_le32(request.at(kCdmaId), id);
    store_le32(request.at(kCdmaLength), static_cast<uint32_t>(payload.size()));
    std::copy(payload.begin(), payload.end(), request.at(kCdmaPayload));
    return request;
  }

  static Request generic(uint32_t id, const Bytes& payload = {}, uint8_t type = 1) {
    Request request;
    auto length = static_cast<uint32_t>(payload.size());
    uint8_t header[] = {type,
                        static_cast<uint8_t>(id >> 16),
                        static_cast<uint8_t>(id >> 8),
                        static_cast<uint8_t>(id),
                        static_cast<uint8_t>(length >> 24),
                        static_cast<uint8_t>(length >> 16),
                        static_cast<uint8_t>(length >> 8),
                        static_cast<uint8_t>(length)};
    std::copy(std::begin(header), std::end(header), request.at(0));
    std::copy(payload.begin(), payload.end(), request.at(kGenericPayload));
    return request;
  }

  // What the header claims, whatever the payload.
  Request&& claiming(uint32_t length) && {
    store_le32(at(kCdmaLength), length);
    return std::move(*this);
  }

  Request&& with_code(const std::string& code) && {
    std::copy(code.begin(), code.end(), at(kCdmaCode));
    return std::move(*this);
  }

  uint8_t* at(size_t offset) { return bytes_.data() + offset; }
  uint8_t* data() { return bytes_.data(); }

 private:
  Bytes bytes_ = Bytes(kRequestSize);
};

inline Bytes le16(uint16_t value) {
  Bytes bytes(2);
  store_le16(bytes.data(), value);
  return bytes;
}

inline Bytes le32(uint32_t value) {
  Bytes bytes(4);
  store_le32(bytes.data(), value);
  return bytes;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline Bytes text(const std::string& characters) {
  return Bytes(characters.begin(), characters.end());
}

// Distinct bytes: 1, 2, 3, ...
inline Bytes numbered(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
  return bytes;
}

// The modem's answer to an element read; `length` is what it claims.
inline Bytes read_answer(uint32_t rde_id, uint32_t length, const Bytes& data, uint32_t result = 0,
                         uint32_t error = 0) {
  return le32(result) + le32(error) + le32(rde_id) + le32(7) + le32(8) + le32(length) +
         le32(static_cast<uint32_t>(data.size())) + data;
}

// A CDMA-hook reply as it must lie on the pipe.
inline std::string reply(uint32_t id, uint32_t status, const Bytes& data = {}) {
  auto length = static_cast<uint32_t>(data.size());
  return hex(le32(id) + le32(length) + le32(status) + Bytes(6) + data + Bytes(2));
}
