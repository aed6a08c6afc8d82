// SPDX-License-Identifier: Apache-2.0
// The QMI codec with every message of every service: bytes that decode are encoded and decoded
// again without a change, and nothing is written behind the room given.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>

#include "device_management_service_v01.h"
#include "fuzz/require.h"
#include "network_access_service_v01.h"
#include "platform/linux/qmi_idl/codec.h"
#include "platform/linux/qmi_json/json_fields.h"
#include "qorext_vendor_service_v01.h"

namespace {

using Bytes = std::vector<uint8_t>;
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

const Message& drawn_message(FuzzedDataProvider& input) {
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

// Any smaller room is refused, and what lies behind it is left alone (the room is a heap block).
void check_room(const Message& message, const Bytes& structure, const Bytes& wire, size_t room) {
  if (room >= wire.size()) return;
  Bytes small(room);
  FUZZ_REQUIRE(qmi_idl::encode(message, structure, small) == -1);
}

// A text ends at its first NUL in the structure, so the first encoding may say less than the bytes
// that were received; from then on nothing changes.
void check_round_trip(const Message& message, const Bytes& structure, size_t room) {
  Bytes wire = encoded(message, structure);
  check_room(message, structure, wire, room);
  Bytes again = decoded(message, wire);
  FUZZ_REQUIRE(encoded(message, again) == wire);
  FUZZ_REQUIRE(decoded(message, encoded(message, again)) == again);

  Bytes from_json(message.size);
  qmi_json::from_json(message, qmi_json::to_json(message, again), from_json);
  FUZZ_REQUIRE(encoded(message, from_json) == wire);
}

void check_decoding(const Message& message, const Bytes& wire, size_t room) {
  Bytes structure(message.size);
  if (qmi_idl::decode(message, wire, structure)) check_round_trip(message, structure, room);
}

// A structure of any bytes is refused or encoded; what was encoded decodes.
void check_encoding(const Message& message, Bytes structure, size_t room) {
  structure.resize(message.size);
  Bytes wire(kMaxWire);
  ssize_t size = qmi_idl::encode(message, structure, wire);
  if (size < 0) return;
  wire.resize(static_cast<size_t>(size));
  check_round_trip(message, decoded(message, wire), room);
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
  const Message& message = drawn_message(input);
  auto room = input.ConsumeIntegral<uint16_t>();
  bool is_structure = input.ConsumeBool();
  Bytes bytes = input.ConsumeRemainingBytes<uint8_t>();
  check_header(bytes);
  if (is_structure) {
    check_encoding(message, bytes, room);
  } else {
    check_decoding(message, bytes, room);
  }
  return 0;
}
