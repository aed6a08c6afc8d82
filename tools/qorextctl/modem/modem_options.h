// SPDX-License-Identifier: Apache-2.0
// The options among the words of a modem command: "--count 3", "--headerless".
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

struct ModemOption {
  enum class Kind { number, number_or_not, word, path, flag };

  const char* name;
  Kind kind;
  const char* help;
};

std::span<const ModemOption> modem_options();

// Moves the options to the command, "--packet-size 8" as "packet_size":8. The other words.
Result<std::vector<std::string>> take_options(Json& command, std::span<const std::string> words);

// Eight hex digits, as the header words of KPI logs are written: 02C0FFEE; also with 0x.
std::optional<uint32_t> parse_word(const std::string& text);

}  // namespace qorextctl
