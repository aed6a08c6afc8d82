// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "device_management_service_v01.h"
#include "network_access_service_v01.h"
#include "platform/linux/qmi_idl/codec.h"
#include "qorext_vendor_service_v01.h"

namespace codec_test {

using Bytes = std::vector<uint8_t>;

inline const qmi_idl::Service& nas() {
  return qmi_idl::service_of(nas_get_service_object_internal_v01(1, 175, 6));
}
inline const qmi_idl::Service& dms() {
  return qmi_idl::service_of(dms_get_service_object_internal_v01(1, 56, 6));
}
inline const qmi_idl::Service& qorext() {
  return qmi_idl::service_of(qorext_vs_get_service_object_internal_v01(1, 1, 4));
}

struct Case {
  const qmi_idl::Service* service;
  const qmi_idl::Message* message;
};

// Every message of the three services.
inline std::vector<Case> all_messages() {
  std::vector<Case> cases;
  for (const auto* service : {&nas(), &dms(), &qorext()}) {
    for (const auto& message : service->messages) cases.push_back({service, &message});
  }
  return cases;
}

inline void PrintTo(const Case& each, std::ostream* out) {
  static const char* const kDirections[] = {"request", "response", "indication"};
  *out << each.service->name << '_' << each.message->name << '_'
       << kDirections[static_cast<int>(each.message->direction)];
}

inline std::string name_of(const testing::TestParamInfo<Case>& info) {
  return testing::PrintToString(info.param);
}

// A heap block of exactly this size, so that a sanitizer detects an access to the next byte.
class ExactBuffer {
 public:
  explicit ExactBuffer(size_t size) : bytes_(new uint8_t[size]), size_(size) {}
  explicit ExactBuffer(std::span<const uint8_t> content) : ExactBuffer(content.size()) {
    if (!content.empty()) memcpy(bytes_.get(), content.data(), content.size());
  }
  std::span<uint8_t> span() { return {bytes_.get(), size_}; }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
  size_t size_;
};

// Enough for every message.
constexpr size_t kWireRoom = 20000;

inline Bytes encoded(const qmi_idl::Message& message, const Bytes& structure) {
  Bytes wire(kWireRoom);
  ssize_t size = qmi_idl::encode(message, structure, wire);
  EXPECT_GE(size, 0);
  wire.resize(size < 0 ? 0 : static_cast<size_t>(size));
  return wire;
}

// A number in a structure.
struct Field {
  size_t offset;
  size_t width;
  int64_t value;
};
inline Field u8_at(size_t offset, int64_t value) { return {offset, 1, value}; }
inline Field u16_at(size_t offset, int64_t value) { return {offset, 2, value}; }
inline Field u32_at(size_t offset, int64_t value) { return {offset, 4, value}; }

inline const qmi_idl::Message& message_of(const qmi_idl::Service& service,
                                          qmi_idl::Direction direction, uint32_t id) {
  return *qmi_idl::find(service, direction, id);
}

inline void put(Bytes& structure, size_t offset, uint64_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) structure[offset + i] = static_cast<uint8_t>(value >> 8 * i);
}

inline uint64_t get(const Bytes& structure, size_t offset, size_t width) {
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) value |= uint64_t{structure[offset + i]} << 8 * i;
  return value;
}

inline void expect_fields(const Bytes& structure, const std::vector<Field>& fields) {
  for (const auto& [offset, width, value] : fields) {
    uint64_t mask = ~uint64_t{0} >> (64 - 8 * width);
    EXPECT_EQ(get(structure, offset, width), static_cast<uint64_t>(value) & mask)
        << "offset " << offset;
  }
}

// Makes structures that the codec must carry unchanged: random numbers that fit their width on the
// wire, random counts, texts and validity bytes. Bytes outside the elements are zero.
class RandomMessage {
 public:
  explicit RandomMessage(unsigned seed) : random_(seed) {}

  Bytes make(const qmi_idl::Message& message) {
    Bytes structure(message.size);
    bool present = true;
    for (size_t i = 0; i < message.elements.size(); ++i) {
      const auto& element = message.elements[i];
      bool starts = i == 0 || message.elements[i - 1].tlv != element.tlv;
      if (starts) present = element.valid_offset == qmi_idl::kNoOffset || below(4) != 0;
      if (!present) continue;
      if (element.valid_offset != qmi_idl::kNoOffset) structure[element.valid_offset] = 1;
      fill(element.shape, structure);
    }
    return structure;
  }

 private:
  uint64_t below(uint64_t limit) {
    return std::uniform_int_distribution<uint64_t>(0, limit - 1)(random_);
  }

  void fill(const qmi_idl::Shape& shape, Bytes& structure) {
    bool counted = shape.kind == qmi_idl::Kind::array || shape.kind == qmi_idl::Kind::text;
    size_t count = counted ? below(shape.capacity + 1u) : shape.capacity;
    if (shape.kind == qmi_idl::Kind::array) {
      put(structure, shape.count_offset, count, shape.count_memory);
    }
    for (size_t i = 0; i < count; ++i) {
      put(structure, shape.offset + i * shape.memory, number(shape), shape.memory);
    }
  }

  uint64_t number(const qmi_idl::Shape& shape) {
    uint64_t limit = uint64_t{1} << 8 * shape.wire;
    if (shape.kind == qmi_idl::Kind::text) return 1 + below(limit - 1);
    uint64_t value = below(limit);
    return shape.is_signed && value >= limit / 2 ? value - limit : value;
  }

  std::mt19937_64 random_;
};

}  // namespace codec_test
