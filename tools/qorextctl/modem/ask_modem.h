// SPDX-License-Identifier: Apache-2.0
// A person's command to the modem.
#pragma once

#include <span>
#include <string>

#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/output/output.h"

namespace qorextctl {

// Asks the modem and prints its answer; an error is left to the caller to print. A readable
// `interrupt_fd` ends the wait for the answer.
Result<Outcome> ask_modem(std::span<const std::string> words, const std::string& control,
                          double timeout_seconds, Printer& printer, int interrupt_fd = -1);

}  // namespace qorextctl
