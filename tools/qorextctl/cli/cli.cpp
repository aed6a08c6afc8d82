// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/cli/cli.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <sstream>

#include "common/completion/command_line.h"
#include "tools/qorextctl/cli/help_text.h"
#include "tools/qorextctl/cli/verbs.h"
#include "tools/qorextctl/session/completion.h"

namespace qorextctl {

namespace {

const std::map<std::string, ColourWhen> kColours = {
    {"auto", ColourWhen::automatic},
    {"always", ColourWhen::always},
    {"never", ColourWhen::never},
};

constexpr double kMaxTimeout = 3600;

void add_shared_options(CLI::App& app, Options& options) {
  app.add_flag("--json", options.json, "one JSON object a line");
  app.add_flag("--log", options.log,
               "show the daemon's log on standard error, masked unless --show-personal is given");
  app.add_flag("--show-personal", options.show_personal,
               "do not mask numbers and codes of the subscriber, and bytes that may hold them, in "
               "decoded frames, logs, recordings, timelines and differences; the files of record "
               "and trace get mode 0600");
  app.add_option_function<std::string>(
         "--color", [&](const std::string& name) { options.colour = kColours.at(name); },
         "auto, always or never; auto: at a terminal, unless NO_COLOR is set")
      ->check(CLI::IsMember(kColours))
      ->option_text("WHEN");
  app.add_option("--timeout", options.timeout, "seconds to wait for a reply")
      ->check(CLI::Range(0.001, kMaxTimeout))
      ->capture_default_str();
  app.add_option("--instance", options.instance, "the daemon's instance id")->capture_default_str();
  app.add_option("--modem", options.setup.modem, "unix:PATH or qrtr; default: a private modem")
      ->check([](const std::string& modem) {
        bool good = modem == "qrtr" || (modem.rfind("unix:", 0) == 0 && modem.size() > 5);
        return good ? "" : "'" + modem + "' is not qrtr or unix:PATH";
      });
  app.add_option("--control", options.setup.control, "control socket of the modem");
  app.add_option("--scenario", options.setup.scenario, "start state of the private modem")
      ->check(CLI::ExistingFile);
  app.add_option("--phone-root", options.setup.phone_root,
                 "folder of the phone's files; default: a private one");
  app.add_option("--daemon-program", options.daemon_executable,
                 "the daemon; default: qorext_client in the folder of qorextctl")
      ->check(CLI::ExistingFile);
  app.add_option("--modem-program", options.setup.modem_executable,
                 "the private modem; default: qorext_modem in the folder of qorextctl")
      ->check(CLI::ExistingFile);
}

// Only "phone" creates the folder.
void check_phone_root(const Options& options) {
  const std::string& root = options.setup.phone_root;
  if (options.verb == Verb::phone) {
    if (root.empty()) throw CLI::RequiredError("--phone-root");
  } else if (!root.empty() && !CLI::ExistingDirectory(root).empty()) {
    throw CLI::ValidationError("--phone-root", CLI::ExistingDirectory(root));
  }
}

// The parser may stop at an error before it reaches the option.
bool wants_json(int argc, const char* const* argv) {
  return std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
}

void describe_command_line(CLI::App& app, Options& options) {
  app.description("Sends requests to qorext_client as the radio interface daemon does.");
  app.name("qorextctl");
  app.set_version_flag("--version", "qorextctl " QOREXT_VERSION);
  app.footer(std::string(kExamples) + kExitStatuses);
  app.require_subcommand(0, 1);
  add_shared_options(app, options);
  add_verbs(app, options);
}

using Candidates = std::vector<Candidate>;

Candidates values_of(const CLI::Option& option) {
  if (option.get_name() == "--modem") return {{"qrtr"}, {"unix:"}};
  return completion::values_of(option);
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

Parsed parse_command_line(int argc, const char* const* argv) {
  Parsed parsed;
  if (argc > 1 && argv[1] == completion::kVerb) {
    parsed.text = complete_command_line({argv + 2, argv + argc});
    parsed.is_text = true;
    return parsed;
  }
  CLI::App app;
  describe_command_line(app, parsed.options);
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) throw CLI::RequiredError("a command");
    check_phone_root(parsed.options);
    parsed.options.setup.timeout_seconds = parsed.options.timeout;
  } catch (const CLI::ParseError& error) {
    parsed.options.json = wants_json(argc, argv);
    std::ostringstream text;
    if (app.exit(error, text, text) == 0) {
      parsed.text = text.str();
      parsed.is_text = true;
    } else {
      parsed.error = usage_error(std::string(error.what()) + " (see: qorextctl --help)");
    }
  }
  return parsed;
}

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
