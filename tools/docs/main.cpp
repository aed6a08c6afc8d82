// SPDX-License-Identifier: Apache-2.0
// Writes the pages into the given folder.
#include <fmt/format.h>

#include <fstream>

#include "tools/docs/pages.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "usage: qorext_docs FOLDER\n");
    return 2;
  }
  for (const docs::Page& page : docs::pages()) {
    std::string path = fmt::format("{}/{}", argv[1], page.file);
    std::ofstream file(path);
    if (file << page.text() << std::flush) continue;
    fmt::print(stderr, "qorext_docs: cannot write {}\n", path);
    return 1;
  }
}
