// SPDX-License-Identifier: Apache-2.0
#include "src/host/base/bytes.h"

#include "src/host/base/log.h"

void toHexString(size_t length, const void* buffer, char* text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const uint8_t* bytes = static_cast<const uint8_t*>(buffer);
  for (size_t i = 0; i < length; ++i) {
    *text++ = kDigits[bytes[i] >> 4];
    *text++ = kDigits[bytes[i] & 0xF];
  }
  *text = '\0';
}

void hexDump(const void* buffer, size_t length) {
  if (length > kHexDumpLimit) {
    LOGE("HexDump=buffer overflow");
    return;
  }
  char text[2 * kHexDumpLimit + 1];
  toHexString(length, buffer, text);
  LOGE("HexDump: Data %s", text);
}
