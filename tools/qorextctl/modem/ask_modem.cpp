// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/modem/ask_modem.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>

#include "tools/qorextctl/modem/modem_words.h"

namespace qorextctl {

namespace {

constexpr std::chrono::milliseconds kPause{5};

Error no_progress(const std::string& what, double seconds) {
  return transport_error(fmt::format("{} within {} s", what, seconds));
}

Json failed(Json answer, const std::string& why) {
  answer["ok"] = false;
  answer["error"] = why;
  return answer;
}

// Null when the modem does not list the upload.
Json find_upload(const Json& answer, const Json& number) {
  if (!answer.contains("uploads")) return nullptr;
  for (const Json& upload : answer.at("uploads")) {
    if (upload.at("upload") == number) return upload;
  }
  return nullptr;
}

Result<Json> wait_for_upload(ModemControl& modem, const Json& begun, double seconds) {
  Deadline deadline = Deadline::in_seconds(seconds);
  Json sent = 0;
  for (;;) {
    auto listed = modem.call({{"command", "uploads"}}, Deadline::in_seconds(seconds));
    if (!listed) return listed;
    Json upload = find_upload(*listed, begun.at("upload"));
    if (!upload.is_object()) return failed(begun, "the modem no longer lists the upload");
    if (upload.at("state") == "failed") return failed(upload, upload.at("error"));
    upload["ok"] = true;
    if (upload.at("state") == "done") return upload;
    if (upload.at("packets") != sent) deadline = Deadline::in_seconds(seconds);
    sent = upload.at("packets");
    if (deadline.passed()) {
      return no_progress("no client of the modem's qorext service took a packet", seconds);
    }
    std::this_thread::sleep_for(kPause);
  }
}

// `begun` holds the number of answers before the command.
Result<Json> wait_for_save(ModemControl& modem, const Json& begun, size_t count, double seconds) {
  Deadline deadline = Deadline::in_seconds(seconds);
  size_t wanted = begun.at("answers").get<size_t>() + count;
  for (;;) {
    auto reported = modem.call({{"command", "hob"}}, deadline);
    if (!reported) return reported;
    if (reported->at("answers").get<size_t>() >= wanted) {
      const Json& states = reported->at("states");
      size_t shown = std::min(count, states.size());
      Json answers(states.end() - static_cast<ptrdiff_t>(shown), states.end());
      bool good = std::all_of(answers.begin(), answers.end(),
                              [](const Json& state) { return state == "saved"; });
      Json answer = {{"ok", true}, {"answers", answers}};
      return good ? answer : failed(answer, "the phone has not saved the block");
    }
    if (deadline.passed()) return no_progress("the phone has not answered the save", seconds);
    std::this_thread::sleep_for(kPause);
  }
}

Result<Json> wait_for_end(ModemControl& modem, Json command, double timeout_seconds) {
  bool wants_end = command.value("wait", true);
  command.erase("wait");
  auto begun = modem.call(command, Deadline::in_seconds(timeout_seconds));
  if (!begun || !begun->value("ok", false) || !wants_end) return begun;
  if (command["command"] == "kpi") return wait_for_upload(modem, *begun, timeout_seconds);
  if (command["command"] != "hob_save") return begun;
  return wait_for_save(modem, *begun, command.value("count", size_t{1}), timeout_seconds);
}

}  // namespace

Result<Json> call_to_end(ModemControl& modem, Json command, double timeout_seconds) {
  try {
    return wait_for_end(modem, std::move(command), timeout_seconds);
  } catch (const Json::exception& error) {
    return transport_error(fmt::format("the modem's answer is not understood: {}", error.what()));
  }
}

Result<Outcome> ask_modem(std::span<const std::string> words, const std::string& control,
                          double timeout_seconds, Printer& printer, int interrupt_fd) {
  auto command = modem_command(words);
  if (!command) return command.error();
  if (control.empty()) return usage_error("modem: give --control PATH, the modem's control socket");
  auto modem = ModemControl::connect(control, timeout_seconds);
  if (!modem) return modem.error();
  modem->watch(interrupt_fd);
  auto answer = call_to_end(*modem, *command, timeout_seconds);
  if (!answer) return answer.error();
  printer.modem_answer(command->value("command", "?"), *answer);
  return answer->value("ok", false) ? Outcome::success : Outcome::refused;
}

}  // namespace qorextctl
