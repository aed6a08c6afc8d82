// SPDX-License-Identifier: Apache-2.0
#include <errno.h>

#include <chrono>
#include <new>
#include <string>

#include "NativeDropBoxWriter.h"
#include "phone_path.h"
#include "platform/linux/phone_files/phone_files.h"

namespace {

constexpr char kFolder[] = "/data/system/dropbox/";

long long milliseconds_now() {
  using std::chrono::duration_cast;
  using std::chrono::milliseconds;
  return duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string path_of(const std::string& tag, long long milliseconds) {
  return phone_path((kFolder + tag + "@" + std::to_string(milliseconds) + ".txt").c_str());
}

// Entries of one tag never share a millisecond: a later one takes the next that is free.
bool add_text(const char* tag, const char* text) {
  for (long long time = milliseconds_now();; ++time) {
    if (phone_files::store(path_of(tag, time), text, phone_files::Existing::keep)) return true;
    if (errno != EEXIST) return false;
  }
}

}  // namespace

// Its callers know no exceptions.
bool NativeDropBoxWriter::addText(const char* tag, const char* text) {
  if (tag == nullptr || text == nullptr || !phone_files::is_plain_name(tag)) return false;
  try {
    return add_text(tag, text);
  } catch (const std::bad_alloc&) {
    return false;
  }
}
