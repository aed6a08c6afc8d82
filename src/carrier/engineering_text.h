// SPDX-License-Identifier: Apache-2.0
// The modem's engineering data: a packed binary record as hexadecimal text, which is converted into
// a reply of 32-bit fields.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "src/host/base/bytes.h"

enum EngineeringType : int32_t { kCallProcessing = 0, kEvdo = 1 };

// One field of the reply: `width` bytes at `source` of the binary record, extended with their sign
// or with zeros to 32 bits at `target` of the reply.
enum Extension : bool { kZero, kSign };
struct EngineeringField {
  uint16_t target;
  uint16_t source;
  uint8_t width;
  Extension extension;
};

// Requests the modem's text, logs it under `title` and decodes it into the record of `record_size`
// bytes. The record is zero after the end of the text, all of it after a failure.
void read_engineering_record(EngineeringType type, const char* title, uint8_t* record,
                             size_t record_size);

// Decodes `length` characters, at most 2 * record_size; the rest is skipped. A character that is
// not a hexadecimal digit is logged and takes the value of the digit before it.
void hexstr_to_bin(const uint8_t* text, size_t length, uint8_t* record, size_t record_size);

template <size_t size>
void unpack_fields(const EngineeringField (&fields)[size], const uint8_t* record, void* reply) {
  auto to = static_cast<uint8_t*>(reply);
  for (const EngineeringField& field : fields) {
    uint32_t value = 0;
    memcpy(&value, record + field.source, field.width);
    if (field.extension == kSign) value = static_cast<uint32_t>(static_cast<int16_t>(value));
    store_le32(to + field.target, value);
  }
}
