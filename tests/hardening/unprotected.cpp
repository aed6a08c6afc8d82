// SPDX-License-Identifier: Apache-2.0
// A program that needs the protections (large frame, copied text, array on the stack) and is built
// without them.
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
  volatile char large[3 * 4096];
  char text[16];
  strncpy(text, argv[argc - 1], sizeof text - 1);
  text[sizeof text - 1] = '\0';
  large[0] = text[0];
  char line[64];
  snprintf(line, sizeof line, "%s %d", text, large[0]);
  return puts(line) < 0 ? 1 : 0;
}
