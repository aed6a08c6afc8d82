// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/shell/history.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/daemon/channel.h"
#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/frames/protocol.h"
#include "tools/qorextctl/frames/values.h"
#include "tools/qorextctl/modem/modem_words.h"

namespace qorextctl {

namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;

View bytes_of(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

bool write_private(const std::string& path, int flags, const std::string& text) {
  UniqueFd file = open_private(path, flags);
  return file.valid() && write_whole(file.get(), bytes_of(text));
}

// Bytes of indications and KPI logs.
constexpr std::string_view kByteFields[] = {"data", "text"};

bool is_named(const Argument& argument, const std::string& name) {
  return name == argument.field.name;
}

bool is_personal_argument(const std::string& name) {
  for (const Request& request : catalogue()) {
    for (const Argument& argument : request.payload.arguments) {
      bool is_personal = argument.field.privacy == Privacy::personal;
      if (is_personal && is_named(argument, name)) return true;
    }
  }
  return false;
}

// Whether the request has a public argument with this name; in other requests it may be personal.
bool is_open_argument(const Request* request, const std::string& name) {
  if (!request) return false;
  const auto& arguments = request->payload.arguments;
  return std::any_of(arguments.begin(), arguments.end(), [&](const Argument& argument) {
    return is_named(argument, name) && argument.field.privacy != Privacy::personal;
  });
}

// The name in "nam.mdn=..." is "mdn"; a word without a value has none.
std::string name_in(const std::string& word) {
  size_t equals = word.find('=');
  if (equals == std::string::npos) return "";
  std::string name = argument_name(word.substr(0, equals));
  return name.substr(name.find_last_of('.') + 1);
}

bool is_private_frame(View request) { return !decode_request(request).personal.empty(); }

bool names_personal(const Words& words) {
  const Request* request = find_request(words[0]);
  return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
    std::string name = name_in(word);
    return is_personal_argument(name) && !is_open_argument(request, name);
  });
}

// A line that cannot be parsed may contain any of the request's values.
bool is_private_request(const Request& request, const Words& words) {
  auto command = parse_command(words, false);
  return command ? is_private_frame(command->bytes) : takes_personal(request);
}

bool names_private_state(const std::string& word) {
  size_t equals = word.find('=');
  if (equals == std::string::npos) return false;
  bool is_byte_field = std::find(std::begin(kByteFields), std::end(kByteFields), name_in(word)) !=
                       std::end(kByteFields);
  return is_byte_field || is_personal_state(word.substr(0, equals));
}

// Raw JSON may contain anything; NV data depends on the item.
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
  if (words[0] == "expect-failure") return is_private({words.begin() + 1, words.end()});
  if (words[0] == "raw" || names_personal(words)) return true;
  if (words[0] == "modem") return is_private_modem_command(words);
  const Request* request = find_request(words[0]);
  return request && is_private_request(*request, words);
}

}  // namespace

std::string history_path() {
  const char* state = getenv("XDG_STATE_HOME");
  const char* home = getenv("HOME");
  constexpr const char* kName = "/qorextctl/history";
  if (state && *state == '/') return std::string(state) + kName;
  return home && *home == '/' ? std::string(home) + "/.local/state" + kName : "";
}

Error HistoryFile::failed() const {
  return {Outcome::broken, fmt::format("the history is not saved: {}: {}", path_, strerror(errno))};
}

Result<std::vector<std::string>> HistoryFile::load() {
  std::vector<std::string> lines;
  std::ifstream file(path_);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  if (lines.size() <= kMaxHistoryLines) return lines;
  lines.erase(lines.begin(), lines.end() - ptrdiff_t{kMaxHistoryLines});
  if (auto error = replace(lines)) return *error;
  return lines;
}

std::optional<Error> HistoryFile::replace(const std::vector<std::string>& lines) {
  std::string temporary = fmt::format("{}.{}", path_, getpid());
  bool good = write_private(temporary, O_TRUNC, fmt::format("{}\n", fmt::join(lines, "\n"))) &&
              rename(temporary.c_str(), path_.c_str()) == 0;
  if (good) return std::nullopt;
  Error error = failed();
  unlink(temporary.c_str());
  return error;
}

std::optional<Error> HistoryFile::add(const std::string& line) {
  if (path_.empty()) return std::nullopt;
  std::error_code ignored;  // open() will fail too
  fs::create_directories(fs::path(path_).parent_path(), ignored);
  if (write_private(path_, O_APPEND, line + "\n")) return std::nullopt;
  return failed();
}

bool is_private_line(const std::string& line) {
  auto words = split_line(line);
  return !words || is_private(*words);
}

}  // namespace qorextctl
