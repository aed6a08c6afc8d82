// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/arguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/frames/json_record.h"
#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/frames/values.h"

namespace qorextctl {

namespace {

constexpr const char* kRecordKey = "json";

using Given = std::map<std::string, std::string>;

Error about(const Request& request, const std::string& what) {
  return usage_error(
      fmt::format("{}: {} (see: qorextctl list {})", request.name, what, request.name));
}

const Argument* find_argument(const Request& request, const std::string& name) {
  for (const Argument& argument : request.payload.arguments) {
    if (name == argument.field.name) return &argument;
  }
  return nullptr;
}

Result<Given> split_words(const Request& request, std::span<const std::string> words) {
  Given given;
  for (const std::string& word : words) {
    size_t equals = word.find('=');
    if (equals == std::string::npos) {
      return about(request,
                   fmt::format("'{}' is not key=value", takes_personal(request) ? kMasked : word));
    }
    std::string key = argument_name(word.substr(0, equals));
    bool known = find_argument(request, key) || (request.payload.takes_record && key == kRecordKey);
    if (!known) return about(request, fmt::format("no argument '{}'", key));
    if (!given.emplace(key, word.substr(equals + 1)).second) {
      return about(request, fmt::format("{} is given twice", key));
    }
  }
  return given;
}

// Adds the members of the JSON record. Words take precedence.
Result<Given> with_record(const Request& request, Given given, bool stdin_free) {
  auto file = given.find(kRecordKey);
  if (file == given.end()) return given;
  auto members = read_record(file->second, stdin_free);
  if (!members) return about(request, members.error().message);
  given.erase(file);
  for (auto& [key, text] : *members) {
    if (!find_argument(request, key)) {
      return about(request, fmt::format("the record's '{}' is not an argument", key));
    }
    given.emplace(key, text);
  }
  return given;
}

// The argument's value as text, or nothing for an argument without bytes.
Result<std::optional<std::string>> text_of(const Request& request, const Argument& argument,
                                           const Given& given) {
  auto found = given.find(argument.field.name);
  if (found != given.end()) return std::optional(found->second);
  Default otherwise = argument.otherwise;
  switch (otherwise.kind) {
    case Default::Kind::required:
      return about(request, fmt::format("{} ({}) is missing", argument.field.name, argument.help));
    case Default::Kind::absent:
      return std::optional<std::string>();
    case Default::Kind::value:
      return std::optional<std::string>(otherwise.text);
    default:
      break;
  }
  const Argument& other = *find_argument(request, otherwise.text);
  auto text = text_of(request, other, given);
  if (!text || otherwise.kind == Default::Kind::same_as) return text;
  auto encoded = encode(other, **text);
  if (!encoded) return about(request, encoded.error().message);
  return std::optional(std::to_string(encoded->count));
}

void put(Bytes& bytes, size_t offset, View content) {
  if (bytes.size() < offset + content.size()) bytes.resize(offset + content.size());
  std::copy(content.begin(), content.end(), bytes.begin() + static_cast<ptrdiff_t>(offset));
}

void place(RequestDraft& draft, const Argument& argument, View content) {
  switch (argument.place) {
    case Place::id:
      draft.id = load_le(content, 0, sizeof draft.id);
      return;
    case Place::type:
      draft.type = content[0];
      return;
    case Place::status:
      draft.status = load_le(content, 0, sizeof draft.status);
      return;
    case Place::code_and_payload:
      put(draft.payload, argument.field.offset, content);
      [[fallthrough]];
    case Place::code:
      std::copy(content.begin(), content.end(), draft.code.begin());
      return;
    case Place::payload:
      put(draft.payload, argument.field.offset, content);
  }
}

Result<RequestDraft> fill(const Request& request, const Given& given) {
  RequestDraft draft{.family = family_of(request), .id = request.id, .payload = {}};
  draft.payload.resize(request.payload.size);
  for (const Argument& argument : request.payload.arguments) {
    auto text = text_of(request, argument, given);
    if (!text) return text.error();
    if (!*text) continue;
    auto encoded = encode(argument, **text);
    if (!encoded) return about(request, encoded.error().message);
    place(draft, argument, encoded->bytes);
  }
  return draft;
}

Result<Bytes> bounded(Bytes bytes) {
  if (bytes.size() <= kMaxRequestBytes) return bytes;
  return usage_error(fmt::format("the request has {} bytes, the daemon takes at most {}",
                                 bytes.size(), kMaxRequestBytes));
}

}  // namespace

Error unknown_request(const std::string& name) {
  std::vector<std::string> names;
  for (const Request& request : catalogue()) names.emplace_back(request.name);
  std::string near = nearest(name, names);
  std::string hint = near.empty() ? "" : fmt::format("; did you mean '{}'?", near);
  return usage_error(
      fmt::format("unknown request '{}'{} (see: qorextctl list)", beginning_of(name), hint));
}

Result<Command> parse_command(std::span<const std::string> words, bool stdin_free) {
  if (words.empty()) return usage_error("no request given (see: qorextctl list)");
  const Request* request = find_request(words[0]);
  if (!request) return unknown_request(words[0]);
  auto given = split_words(*request, words.subspan(1));
  if (!given) return given.error();
  given = with_record(*request, *given, stdin_free);
  if (!given) return given.error();
  auto draft = fill(*request, *given);
  if (!draft) return draft.error();
  auto bytes = bounded(build(*draft));
  if (!bytes) return about(*request, bytes.error().message);
  return Command{request, *bytes};
}

Result<Bytes> parse_raw(std::span<const std::string> words) {
  std::string text = fmt::format("{}", fmt::join(words, ""));
  auto bytes = parse_hex(text);
  if (!bytes) return usage_error("raw: the words are not hex (pairs of digits)");
  if (bytes->empty()) return usage_error("raw: no bytes given");
  auto checked = bounded(*bytes);
  if (!checked) return usage_error("raw: " + checked.error().message);
  return checked;
}

}  // namespace qorextctl
