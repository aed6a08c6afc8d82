// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/engineering_text.h"

#include <algorithm>

#include "src/carrier_modem/operations.h"
#include "src/host/base/log.h"

namespace {

constexpr int kNoNibble = -1;

int nibble_of(uint8_t character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return kNoNibble;
}

}  // namespace

void hexstr_to_bin(const uint8_t* text, size_t length, uint8_t* record, size_t record_size) {
  length = std::min(length, 2 * record_size);
  memset(record, 0, length / 2);
  int value = 0;  // of the latest valid digit
  for (size_t i = 0; i < length; ++i) {
    int nibble = nibble_of(text[i]);
    if (nibble == kNoNibble) {
      LOGE("qorext_hook_sprint_hexstr_to_bin invalid char %d %d", text[i], static_cast<int>(i));
    } else {
      value = nibble;
    }
    bool is_high = i % 2 == 0;
    record[i / 2] = static_cast<uint8_t>(is_high ? value << 4 : record[i / 2] | value);
  }
}

void read_engineering_record(EngineeringType type, const char* title, uint8_t* record,
                             size_t record_size) {
  // The modem's length may exceed its text; up to the dump's limit the bytes after the text are
  // zero.
  uint8_t text[kHexDumpLimit] = {};
  static_assert(sizeof text >= kEngineeringTextSize);
  uint32_t length = 0;
  // After a failure the length stays 0 and the record zero; the reply still has status 0.
  qor_qmi_sprint_get_engineering_info(type, text, &length);

  LOGE("%s hexDump...", title);
  hexDump(text, length);
  memset(record, 0, record_size);
  hexstr_to_bin(text, length, record, record_size);
}
