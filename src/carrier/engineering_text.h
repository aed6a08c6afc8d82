// SPDX-License-Identifier: Apache-2.0
// The modem's engineering data: hexadecimal text of a packed binary record, which becomes a reply
// of 32-bit fields.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "src/carrier/carrier_reply.h"

enum EngineeringType : int32_t { kCallProcessing = 0, kEvdo = 1 };

// Where one field of the reply comes from: `width` bytes at `source` of the binary record,
// extended with their sign or with zeros to a word at `target` of the reply.
struct EngineeringField {
  uint16_t target;
  uint16_t source;
  uint8_t width;
  bool is_signed = false;
};

// Asks the modem for its text, logs it as `title` and decodes it into the record of `record_size`
// bytes, which is zero where the text says nothing (all of it after a failure).
void read_engineering_record(EngineeringType type, const char* title, uint8_t* record,
                             size_t record_size);

// Decodes `length` characters; the text beyond 2 * record_size characters is passed over. A
// character that is no hexadecimal digit is logged and stands for the value decoded before it.
void hexstr_to_bin(const uint8_t* text, size_t length, uint8_t* record, size_t record_size);

template <size_t size>
void unpack_fields(const EngineeringField (&fields)[size], const uint8_t* record, void* reply) {
  auto to = static_cast<uint8_t*>(reply);
  for (const EngineeringField& field : fields) {
    uint32_t value = 0;
    memcpy(&value, record + field.source, field.width);
    if (field.is_signed) value = static_cast<uint32_t>(static_cast<int16_t>(value));
    store_le32(to + field.target, value);
  }
}
