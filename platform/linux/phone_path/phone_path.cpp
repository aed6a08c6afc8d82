// SPDX-License-Identifier: Apache-2.0
#include "phone_path.h"

#include <climits>
#include <cstdio>
#include <cstdlib>

namespace {

// One character longer than a path may be. Returning the path unmapped instead would access the
// workstation's own file of that name.
struct TooLong {
  char text[PATH_MAX + 1];
  constexpr TooLong() : text() {
    for (char& character : text) character = '/';
    text[PATH_MAX] = '\0';
  }
};
constexpr TooLong kTooLong;

}  // namespace

const char* phone_path(const char* path) {
  thread_local char mapped[2][PATH_MAX];
  thread_local unsigned next = 0;

  const char* root = getenv("QOREXT_PHONE_ROOT");
  if (root == nullptr || *root == '\0' || *path == '\0') return path;

  char* text = mapped[next++ % 2];
  int length = snprintf(text, PATH_MAX, "%s%s", root, path);
  return length < PATH_MAX ? text : kTooLong.text;
}
