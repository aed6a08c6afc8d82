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

// The name of an entry is its time. When it is taken, the entry gets the next free millisecond.
bool add_text(const char* tag, const char* text) {
  for (long long time = milliseconds_now();; ++time) {
    if (phone_files::store(path_of(tag, time), text, phone_files::Existing::keep)) return true;
    if (errno != EEXIST) return false;
  }
}

}  // namespace

// The callers are compiled without exceptions, so none may leave this function.
bool NativeDropBoxWriter::addText(const char* tag, const char* text) {
  if (tag == nullptr || text == nullptr || !phone_files::is_plain_name(tag)) return false;
  try {
    return add_text(tag, text);
  } catch (const std::bad_alloc&) {
    return false;
  }
}
