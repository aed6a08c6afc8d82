// SPDX-License-Identifier: Apache-2.0
// Adds entries to the Android DropBox, as libnativedropbox.so exports it.
#pragma once

class NativeDropBoxWriter {
 public:
  // `tag` names the kind of entry, `text` is its content; both NUL-terminated. False when the
  // entry could not be added.
  static bool addText(const char* tag, const char* text);
};
