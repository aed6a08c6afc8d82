// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/command.h"

#include <sys/mman.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>

#include "tests/e2e/support/patience.h"
#include "tools/qorextctl/daemon/process.h"

namespace e2e {

namespace {

std::string content_of(const qorextctl::UniqueFd& file) {
  std::string content;
  char buffer[4096];
  off_t offset = 0;
  for (ssize_t size = 1; size > 0; offset += size) {
    size = pread(file.get(), buffer, sizeof buffer, offset);
    if (size > 0) content.append(buffer, static_cast<size_t>(size));
  }
  return content;
}

std::string path_of(const qorextctl::UniqueFd& file) {
  return "/proc/self/fd/" + std::to_string(file.get());
}

}  // namespace

CommandResult run_command(const std::string& line) {
  qorextctl::UniqueFd output(memfd_create("output", MFD_CLOEXEC));
  qorextctl::UniqueFd errors(memfd_create("errors", MFD_CLOEXEC));
  qorextctl::Launch launch;
  launch.arguments = {"/bin/sh", "-c",
                      "{ " + line + "\n} >" + path_of(output) + " 2>" + path_of(errors)};
  launch.environment = {{"BIN", QOREXT_BIN}};
  launch.descriptors = {output.get(), errors.get()};
  auto process = qorextctl::Process::start(launch);
  if (!process) throw std::runtime_error(process.error().message);
  auto status = process->wait(qorextctl::Deadline::in(kPatience));
  bool ended = status && status->signal == 0;
  return {ended ? status->code : -1, content_of(output), content_of(errors)};
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace e2e
