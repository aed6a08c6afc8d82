// SPDX-License-Identifier: Apache-2.0
// What may follow in a command to the modem.
#include <algorithm>

#include "modem/messages/fault.h"
#include "modem/messages/services.h"
#include "platform/linux/qmi_json/fields.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/modem/modem_words.h"
#include "tools/qorextctl/session/completion.h"

namespace qorextctl {

namespace {

using qmi_idl::Direction;
using Words = std::vector<std::string>;
using Candidates = std::vector<Candidate>;

Candidates service_names(const std::string& prefix) {
  Candidates names;
  for (const qmi_idl::Service* service : modem::services())
    names.push_back({prefix + service->name});
  return names;
}

void add_messages(Candidates& names, const qmi_idl::Service& service, Direction direction,
                  const std::string& prefix) {
  for (const qmi_idl::Message& message : service.messages) {
    if (message.direction == direction) names.push_back({prefix + message.name});
  }
}

Candidates indication_names() {
  Candidates names;
  add_messages(names, modem::qorext_service(), Direction::indication, "");
  return names;
}

Candidates fields_of(const std::string& indication) {
  Candidates fields;
  const qmi_idl::Message* message = qmi_json::find_by_name(
      modem::qorext_service(), Direction::indication, modem_indication(indication));
  if (!message) return fields;
  for (const qmi_idl::Element& element : message->elements) {
    fields.push_back({element.name + std::string("=")});
  }
  return fields;
}

Candidates fault_kinds() {
  Candidates kinds;
  for (const char* kind : modem::kFaultKinds) kinds.push_back({kind});
  return kinds;
}

Candidates request_names(const std::string& prefix) {
  Candidates names;
  for (const qmi_idl::Service* service : modem::services()) {
    add_messages(names, *service, Direction::request, prefix);
  }
  return names;
}

Candidates option_names() {
  Candidates names;
  for (const ModemOption& option : modem_options()) names.push_back({option.name, option.help});
  return names;
}

Candidates state_pairs() {
  Candidates pairs;
  for (const std::string& key : modem_state_keys()) pairs.push_back({key + "="});
  return pairs;
}

Words split_usage(std::string usage) {
  constexpr std::string_view kMarks = "[]|.";
  std::replace_if(
      usage.begin(), usage.end(),
      [&](char character) { return kMarks.find(character) != std::string_view::npos; }, ' ');
  return split_line(usage).value_or(Words());
}

// The literal words of a usage such as "KIND [service=] [--count N] up|down". Words in capitals are
// placeholders.
Candidates named_in(const std::string& usage) {
  Candidates candidates;
  for (const std::string& word : split_usage(usage)) {
    bool is_placeholder = word.front() >= 'A' && word.front() <= 'Z';
    size_t equals = word.find('=');
    size_t size = equals == std::string::npos ? word.size() : equals + 1;
    if (!is_placeholder) candidates.push_back({word.substr(0, size)});
  }
  return candidates;
}

// The first word after a command, where a table lists the possible ones.
Candidates first_words(const std::string& command) {
  if (command == "indicate") return indication_names();
  if (command == "service") return service_names("");
  if (command == "fault") return fault_kinds();
  return {};
}

// Later words, besides those of the command's usage. `words` begin with the command.
Candidates further_words(const Words& words) {
  const std::string& word = words.back();
  if (words[0] == "indicate") return fields_of(words[1]);
  if (words[0] != "fault") return {};
  if (word.starts_with("service=")) return service_names("service=");
  if (word.starts_with("message=")) return request_names("message=");
  return {};
}

Candidates words_after(const ModemCommand& command, const Words& words) {
  if (words[0] == "set") return state_pairs();
  if (words[words.size() - 2] == "--file")
    return completion::files_beginning_with("", words.back());
  Candidates names = words.size() == 2 ? first_words(words[0]) : further_words(words);
  bool takes_value = words.back().find('=') != std::string::npos;
  if (takes_value || (words.size() == 2 && !names.empty())) return names;
  for (Candidate& name : named_in(command.arguments)) names.push_back(std::move(name));
  bool wants_option = words.back().starts_with("--");
  return wants_option && names.empty() ? option_names() : names;
}

}  // namespace

Candidates words_of_modem(const Words& words) {
  Candidates names;
  for (const ModemCommand& command : modem_commands()) {
    if (words.size() == 1) {
      names.push_back({command.name, command.help});
    } else if (json_key(words[0]) == command.name) {
      return words_after(command, words);
    }
  }
  return names;
}

Candidates complete_modem(const Words& words) {
  return completion::beginning_with(words.back(), words_of_modem(words));
}

}  // namespace qorextctl
