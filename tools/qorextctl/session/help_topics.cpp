// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/help_topics.h"

#include <fmt/format.h>

#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/modem/modem_control.h"
#include "tools/qorextctl/session/session.h"

namespace qorextctl {

namespace {

std::string row(const std::string& usage, const char* help) {
  return fmt::format("  {:<39} {}\n", usage, help);
}

std::string row(const LineCommand& command) {
  return row(fmt::format("{} {}", command.name, command.arguments), command.help);
}

std::string requests_text() {
  std::string text;
  for (const Request& request : catalogue()) text += row(request.name, request.description);
  return text;
}

}  // namespace

std::string session_lines() {
  std::string text = row("NAME [KEY=VALUE]...", "a request");
  for (const LineCommand& command : Session::commands()) text += row(command);
  return text + row("# COMMENT", "is passed over");
}

HelpTopic all_help() { return {nullptr, session_lines() + "requests:\n" + requests_text()}; }

Result<HelpTopic> help_on(const std::string& name) {
  for (const LineCommand& command : Session::commands()) {
    if (name != command.name) continue;
    return HelpTopic{nullptr, row(command) + (name == "modem" ? modem_command_help() : "")};
  }
  const Request* request = find_request(name);
  if (!request) return unknown_request(name);
  return HelpTopic{request, ""};
}

}  // namespace qorextctl
