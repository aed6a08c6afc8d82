// SPDX-License-Identifier: Apache-2.0
// The QMI codec with every message of every service: encoding a decoded message and decoding it
// again changes nothing, and nothing is written outside the buffer.
#include <algorithm>

#include "device_management_service_v01.h"
#include "fuzz/support.h"
#include "network_access_service_v01.h"
#include "platform/linux/qmi_idl/codec.h"
#include "platform/linux/qmi_json/json_fields.h"
#include "qorext_vendor_service_v01.h"

namespace {

using fuzz::Bytes;
using qmi_idl::Message;

constexpr size_t kMaxWire = 65535;

std::vector<const Message*> messages() {
  std::vector<const Message*> all;
  for (const void* object : {nas_get_service_object_internal_v01(1, 175, 6),
                             dms_get_service_object_internal_v01(1, 56, 6),
                             qorext_vs_get_service_object_internal_v01(1, 1, 4)}) {
    for (const Message& message : qmi_idl::service_of(object).messages) all.push_back(&message);
  }
  return all;
}

const Message& consume_message(FuzzedDataProvider& input) {
  static const std::vector<const Message*> all = messages();
  return *all[input.ConsumeIntegralInRange<size_t>(0, all.size() - 1)];
}

Bytes encoded(const Message& message, const Bytes& structure) {
  Bytes wire(kMaxWire);
  ssize_t size = qmi_idl::encode(message, structure, wire);
  FUZZ_REQUIRE(size >= 0);
  wire.resize(static_cast<size_t>(size));
  return wire;
}

Bytes decoded(const Message& message, const Bytes& wire) {
  Bytes structure(message.size);
  FUZZ_REQUIRE(qmi_idl::decode(message, wire, structure));
  return structure;
}

// Every smaller buffer is refused. It is a heap block, so that a write past its end is detected.
void check_small_buffer(const Message& message, const Bytes& structure, const Bytes& wire,
                        size_t buffer_size) {
  if (buffer_size >= wire.size()) return;
  Bytes small(buffer_size);
  FUZZ_REQUIRE(qmi_idl::encode(message, structure, small) == -1);
}

// In the structure a text ends at its first NUL, so the first encoding can be shorter than the
// bytes received. Later encodings do not differ.
void check_round_trip(const Message& message, const Bytes& structure, size_t buffer_size) {
  Bytes wire = encoded(message, structure);
  check_small_buffer(message, structure, wire, buffer_size);
  Bytes again = decoded(message, wire);
  FUZZ_REQUIRE(encoded(message, again) == wire);
  FUZZ_REQUIRE(decoded(message, encoded(message, again)) == again);

  Bytes from_json(message.size);
  qmi_json::from_json(message, qmi_json::to_json(message, again), from_json);
  FUZZ_REQUIRE(encoded(message, from_json) == wire);
}

void check_decoding(const Message& message, const Bytes& wire, size_t buffer_size) {
  Bytes structure(message.size);
  if (qmi_idl::decode(message, wire, structure)) check_round_trip(message, structure, buffer_size);
}

// Any structure is refused or encoded, and an encoded one can be decoded.
void check_encoding(const Message& message, Bytes structure, size_t buffer_size) {
  structure.resize(message.size);
  Bytes wire(kMaxWire);
  ssize_t size = qmi_idl::encode(message, structure, wire);
  if (size < 0) return;
  wire.resize(static_cast<size_t>(size));
  check_round_trip(message, decoded(message, wire), buffer_size);
}

void check_header(const Bytes& packet) {
  auto header = qmi_idl::load_header(packet);
  if (!header) return;
  uint8_t stored[qmi_idl::kHeaderSize];
  qmi_idl::store_header(*header, stored);
  FUZZ_REQUIRE(std::equal(std::begin(stored), std::end(stored), packet.begin()));
  FUZZ_REQUIRE(packet.size() == qmi_idl::kHeaderSize + header->length);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  const Message& message = consume_message(input);
  auto buffer_size = input.ConsumeIntegral<uint16_t>();
  bool is_structure = input.ConsumeBool();
  Bytes bytes = input.ConsumeRemainingBytes<uint8_t>();
  check_header(bytes);
  if (is_structure) {
    check_encoding(message, bytes, buffer_size);
  } else {
    check_decoding(message, bytes, buffer_size);
  }
  return 0;
}
