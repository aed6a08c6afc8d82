#include "shell/private_line.h"

#include <algorithm>

#include "base/spelling.h"
#include "catalogue/nv_items.h"
#include "catalogue/values.h"
#include "frames/arguments.h"
#include "frames/decode.h"
#include "session/line_words.h"

namespace qorextctl {

namespace {

using Words = std::vector<std::string>;

// Names of the modem's state that are no arguments of a request.
constexpr std::string_view kStateKeys[] = {"subsidy-lock-code", "data", "text"};

bool is_personal_argument(const std::string& name) {
  for (const Request& request : catalogue()) {
    for (const Argument& argument : request.payload.arguments) {
      bool is_personal = argument.field.privacy == Privacy::personal;
      if (is_personal && name == argument.field.name) return true;
    }
  }
  return false;
}

// "nam.mdn=..." has the name mdn; a word that gives no value has none.
std::string name_in(const std::string& word) {
  size_t equals = word.find('=');
  if (equals == std::string::npos) return "";
  std::string name = argument_name(word.substr(0, equals));
  return name.substr(name.find_last_of('.') + 1);
}

bool names_personal(const std::string& word) { return is_personal_argument(name_in(word)); }

bool names_private_state(const std::string& word) {
  return std::find(std::begin(kStateKeys), std::end(kStateKeys), name_in(word)) !=
         std::end(kStateKeys);
}

bool is_private_frame(View request) { return !decode_request(request).personal.empty(); }

// Of an NV item, and of everything that is given as it will be sent.
bool is_private_modem_command(const Words& words) {
  if (words.size() < 2) return false;
  if (words[1].front() == '{') return true;
  if (std::any_of(words.begin(), words.end(), names_private_state)) return true;
  if (words[1] != "nv" || words.size() < 4) return false;
  auto item = parse_number(words[2]);
  return !item || is_personal_item(static_cast<uint32_t>(*item));
}

bool is_private(const Words& words) {
  if (words.empty()) return false;
  Words behind(words.begin() + 1, words.end());
  if (words[0] == "expect-failure") return is_private(behind);
  if (std::any_of(words.begin(), words.end(), names_personal)) return true;
  if (words[0] == "modem") return is_private_modem_command(words);
  if (words[0] == "raw") {
    auto bytes = parse_raw(behind);
    return !bytes || is_private_frame(*bytes);
  }
  if (!find_request(words[0])) return false;
  auto command = parse_command(words, false);
  return command && is_private_frame(command->bytes);
}

}  // namespace

bool is_private_line(const std::string& line) {
  auto words = split_line(line);
  return !words || is_private(*words);
}

}  // namespace qorextctl
