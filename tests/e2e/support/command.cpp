// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/command.h"

#include <sys/mman.h>

#include <fstream>
#include <sstream>

#include "tests/e2e/support/value_or_throw.h"
#include "tests/e2e/support/wait.h"
#include "tools/qorextctl/daemon/process.h"

namespace e2e {

namespace {

std::string path_of(const qorextctl::UniqueFd& file) {
  return "/proc/self/fd/" + std::to_string(file.get());
}

}  // namespace

CommandResult run_command(const std::string& line, const std::string& input) {
  qorextctl::UniqueFd stdin_file(memfd_create("input", MFD_CLOEXEC));
  std::ofstream(path_of(stdin_file), std::ios::binary) << input;
  qorextctl::UniqueFd output(memfd_create("output", MFD_CLOEXEC));
  qorextctl::UniqueFd errors(memfd_create("errors", MFD_CLOEXEC));
  qorextctl::Launch launch;
  launch.arguments = {"/bin/sh", "-c",
                      "{ " + line + "\n} <" + path_of(stdin_file) + " >" + path_of(output) + " 2>" +
                          path_of(errors)};
  launch.environment = {{"BIN", QOREXT_BIN}};
  launch.descriptors = {stdin_file.get(), output.get(), errors.get()};
  auto process = value_or_throw(qorextctl::Process::start(launch));
  auto status = process.wait(time_limit());
  bool ended = status && status->signal == 0;
  return {ended ? status->code : -1, content_of(path_of(output)), content_of(path_of(errors))};
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string content_of(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return std::move(content).str();
}

}  // namespace e2e
