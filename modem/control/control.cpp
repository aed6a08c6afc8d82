// SPDX-License-Identifier: Apache-2.0
#include "modem/control/control.h"

#include <chrono>

#include "modem/control/commands.h"
#include "platform/linux/qmi_json/foreign_json.h"

namespace modem {
namespace {

using nlohmann::json;

json parse_line(const std::string& line) {
  auto parsed = qmi_json::parse_foreign<json>(line);
  if (parsed.excess != nullptr)
    throw std::invalid_argument(std::string("the line ") + parsed.excess);
  if (parsed.value.is_discarded()) throw std::invalid_argument("the line is not JSON");
  return std::move(parsed.value);
}

std::string take_name(json& given) {
  if (!given.is_object() || !given.contains("command") || !given["command"].is_string()) {
    throw std::invalid_argument("expected an object with a \"command\"");
  }
  std::string name = given["command"];
  given.erase("command");
  return name;
}

json failure(const std::string& what) { return {{"ok", false}, {"error", what}}; }

int64_t now() { return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count(); }

}  // namespace

json Control::run(const std::string& line) {
  watch_wanted_ = false;
  try {
    json given = parse_line(line);
    std::string name = take_name(given);
    json answer = run_command(simulator_, name, given);
    answer["ok"] = true;
    quit_wanted_ = quit_wanted_ || name == kQuit;
    watch_wanted_ = name == kWatch;
    return answer;
  } catch (const ArchiveError& error) {
    return failure(error.describe());
  } catch (const std::exception& error) {
    return failure(error.what());
  }
}

std::string Control::answer(const std::string& line) {
  return run(line).dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string watched_message(const qmi_idl::Service& service, uint64_t client,
                            std::span<const uint8_t> packet) {
  json message = {{"time", now()},
                  {"service", service.name},
                  {"client", client},
                  {"packet", qmi_json::to_hex(packet)}};
  return json{{"message", message}}.dump();
}

std::string watched_service(const qmi_idl::Service& service, bool is_up) {
  return json{{"service", {{"time", now()}, {"name", service.name}, {"up", is_up}}}}.dump();
}

}  // namespace modem
