// SPDX-License-Identifier: Apache-2.0
// Commands to the simulated modem as a person types them: "nv 28 0A", "set lte.mcc=310",
// "indicate pfp rat=1 --count 3", "service nas down".
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "modem/state/state_keys.h"
#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// The JSON object for the control socket. A word that begins with '{' is the whole object.
Result<Json> modem_command(std::span<const std::string> words);

// The modem's name of an indication, also for the short names "carrier" and "utility".
std::string modem_indication(const std::string& word);

struct ModemCommand {
  const char* name;
  const char* arguments;
  const char* help;
};
std::vector<ModemCommand> modem_commands();

// One line per command, for --help.
std::string modem_command_help();

// The keys that "set" accepts, such as "lte.mcc"; a list of tables is one key.
std::vector<std::string> modem_state_keys();

// Whether the value of a key of the state is personal, contains a personal value, or might: the
// section may be missing from the key.
bool is_personal_state(const std::string& name);

// Adds key=value words to the object. `is_string` says of a key, such as "lte.mcc", whether a value
// that looks like a number is a string nevertheless.
using IsString = std::function<bool(std::string_view key)>;
Result<Json> with_pairs(Json object, std::span<const std::string> words, const IsString& is_string);

bool is_string(const std::vector<modem::Key>& keys, std::string_view path);

// An option of the commands, such as "--count 3" or "--headerless".
struct ModemOption {
  enum class Kind { number, number_or_not, word, path, flag };

  const char* name;
  Kind kind;
  const char* help;
};
std::span<const ModemOption> modem_options();

// Moves the options to the command, "--packet-size 8" as "packet_size":8. Returns the other words.
Result<std::vector<std::string>> take_options(Json& command, std::span<const std::string> words);

// Eight hex digits, also after 0x: a header word of a KPI log, 02C0FFEE.
std::optional<uint32_t> parse_word(const std::string& text);

}  // namespace qorextctl
