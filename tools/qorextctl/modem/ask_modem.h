// SPDX-License-Identifier: Apache-2.0
// Commands to the modem, carried out to their end.
#pragma once

#include <span>
#include <string>

#include "tools/qorextctl/modem/modem_control.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// As ModemControl::call(), but "kpi" returns when the whole log has been handed to the transport,
// and "hob_save" when the phone has answered, unless the command has "wait":false.
// `timeout_seconds` applies to each answer, and to an upload without progress.
Result<Json> call_to_end(ModemControl& modem, Json command, double timeout_seconds);

// Sends the command that the words describe and prints its answer. The caller prints the error.
// A readable `interrupt_fd` ends the wait for the answer.
Result<Outcome> ask_modem(std::span<const std::string> words, const std::string& control,
                          double timeout_seconds, Printer& printer, int interrupt_fd = -1);

}  // namespace qorextctl
