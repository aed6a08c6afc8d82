// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/modem/ask_modem.h"

#include "tools/qorextctl/modem/modem_control.h"
#include "tools/qorextctl/modem/modem_wait.h"

namespace qorextctl {

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
