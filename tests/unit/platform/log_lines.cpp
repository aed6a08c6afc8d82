// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/platform/log_lines.h"

#include <android/log.h>
#include <stdarg.h>
#include <stdio.h>

#include <mutex>
#include <utility>

namespace client_test {
namespace {

constexpr size_t kMaxLine = 1024;

std::mutex g_mutex;
std::vector<std::string> g_lines;

}  // namespace

std::vector<std::string> take_log_lines() {
  std::lock_guard lock(g_mutex);
  return std::exchange(g_lines, {});
}

}  // namespace client_test

extern "C" __attribute__((visibility("default"))) int __android_log_print(int priority,
                                                                          const char* tag,
                                                                          const char* format, ...) {
  char text[client_test::kMaxLine];
  va_list arguments;
  va_start(arguments, format);
  int length = vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  if (priority != ANDROID_LOG_ERROR) return length;
  std::lock_guard lock(client_test::g_mutex);
  client_test::g_lines.push_back(std::string(tag) + ": " + text);
  return length;
}
