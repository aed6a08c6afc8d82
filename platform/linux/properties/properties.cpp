// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <new>
#include <string>

#include "cutils/properties.h"
#include "phone_path.h"
#include "platform/linux/phone_files/phone_files.h"

namespace {

constexpr char kFolder[] = "/dev/__properties__/";
constexpr size_t kMaxLength = PROPERTY_VALUE_MAX - 1;

std::string path_of(const char* key) { return phone_path((std::string(kFolder) + key).c_str()); }

bool is_valid(const char* key) { return key != nullptr && phone_files::is_plain_name(key); }

// A property with this prefix can be set once.
constexpr char kReadOnly[] = "ro.";

phone_files::Existing existing(const char* key) {
  bool is_read_only = strncmp(key, kReadOnly, strlen(kReadOnly)) == 0;
  return is_read_only ? phone_files::Existing::keep : phone_files::Existing::replace;
}

// The C interface must not throw: without memory for its path a property counts as unset.
int open_property(const char* key) {
  try {
    return open(path_of(key).c_str(), O_RDONLY | O_CLOEXEC);
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

// Returns the length of the string stored in `value`, or -1 when the property is not set.
ssize_t read_property(const char* key, char* value) {
  int fd = open_property(key);
  if (fd < 0) return -1;
  ssize_t size = read(fd, value, kMaxLength);
  close(fd);
  if (size < 0) return -1;
  value[size] = '\0';
  return static_cast<ssize_t>(strlen(value));
}

}  // namespace

int property_get(const char* key, char* value, const char* default_value) {
  ssize_t length = is_valid(key) ? read_property(key, value) : -1;
  if (length > 0) return static_cast<int>(length);

  const char* text = default_value == nullptr ? "" : default_value;
  size_t size = strnlen(text, kMaxLength);
  memcpy(value, text, size);
  value[size] = '\0';
  return static_cast<int>(size);
}

int property_set(const char* key, const char* value) {
  if (!is_valid(key) || value == nullptr || strlen(value) > kMaxLength) return -1;
  try {
    return phone_files::store(path_of(key), value, existing(key)) ? 0 : -1;
  } catch (const std::bad_alloc&) {
    return -1;
  }
}
