#include "phone_path.h"

#include <climits>
#include <cstdio>
#include <cstdlib>

const char* phone_path(const char* path) {
  thread_local char mapped[2][PATH_MAX];
  thread_local unsigned turn = 0;

  const char* root = getenv("QOREXT_PHONE_ROOT");
  if (root == nullptr || *root == '\0') return path;

  char* text = mapped[turn++ % 2];
  int length = snprintf(text, PATH_MAX, "%s%s", root, path);
  return length < PATH_MAX ? text : path;
}
