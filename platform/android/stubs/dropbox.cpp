// SPDX-License-Identifier: Apache-2.0
// Refuses every entry: a vendor process cannot call the DropBox service.
#include <android/log.h>

#include "NativeDropBoxWriter.h"

bool NativeDropBoxWriter::addText(const char* tag, const char* text) {
  __android_log_print(ANDROID_LOG_WARN, "qorext_stubs", "DropBox entry %s not added: %s",
                      tag == nullptr ? "(null)" : tag, text == nullptr ? "(null)" : text);
  return false;
}
