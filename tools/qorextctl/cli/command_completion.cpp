// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>

#include "common/completion/command_line.h"
#include "tools/qorextctl/cli/cli.h"
#include "tools/qorextctl/cli/command_app.h"
#include "tools/qorextctl/session/completion.h"

namespace qorextctl {

namespace {

using Candidates = std::vector<Candidate>;

Candidates values_of(const CLI::Option& option) {
  Candidates values;
  for (const std::string& choice : choices_of(option.get_name())) values.push_back({choice});
  return values.empty() ? completion::values_of(option) : values;
}

Candidates first_of(const Candidates& candidates, const completion::Place& place) {
  return place.positionals.size() == 1 ? candidates : Candidates();
}

Candidates words_of(const completion::Place& place) {
  std::string verb = place.verb->get_name();
  if (verb == "request") return complete_request(place.positionals);
  if (verb == "list") return first_of(complete_request(place.positionals), place);
  if (verb == "modem") return complete_modem(place.positionals);
  return first_of(completion::positionals_of(*place.verb), place);
}

}  // namespace

std::string complete_command_line(const std::vector<std::string>& words) {
  CLI::App app;
  Options options;
  describe_command_line(app, options);
  completion::Place place = completion::place_in(app, words);
  bool wants_option = !place.word.empty() && place.word.front() == '-';
  Candidates candidates;
  if (place.option) {
    candidates = values_of(*place.option);
  } else if (wants_option) {
    candidates = completion::options_at(app, place);
  } else {
    candidates = place.verb ? words_of(place) : completion::verbs_of(app);
  }
  return completion::to_text(completion::beginning_with(place.word, candidates));
}

}  // namespace qorextctl
