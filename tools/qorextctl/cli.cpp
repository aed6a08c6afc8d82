#include "cli.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <sstream>

#include "command_app.h"
#include "command_line.h"
#include "help_text.h"
#include "help_topics.h"
#include "modem_control.h"
#include "modem_options.h"

namespace qorextctl {

namespace {

constexpr double kMostTimeout = 3600;

const std::map<std::string, ColourWhen> kColours = {
    {"auto", ColourWhen::automatic},
    {"always", ColourWhen::always},
    {"never", ColourWhen::never},
};

const std::map<std::string, InputKind> kInputs = {
    {"request", InputKind::request},
    {"reply", InputKind::reply},
    {"unsolicited", InputKind::unsolicited},
    {"log", InputKind::log},
};

template <class T>
std::vector<std::string> names_of(const std::map<std::string, T>& choices) {
  std::vector<std::string> names;
  names.reserve(choices.size());
  for (const auto& [name, value] : choices) names.push_back(name);
  return names;
}

template <class T>
T chosen(const char* option, const std::map<std::string, T>& choices, const std::string& name) {
  auto choice = choices.find(name);
  if (choice != choices.end()) return choice->second;
  std::string names;
  for (const auto& [known, value] : choices) names += names.empty() ? known : ", " + known;
  throw CLI::ValidationError(option, "'" + name + "' is none of " + names);
}

void add_shared_options(CLI::App& app, Options& options) {
  app.add_flag("--json", options.json, "one JSON object a line");
  app.add_flag("--log", options.log, "show the daemon's log on standard error");
  app.add_flag("--show-personal", options.show_personal,
               "do not mask numbers and codes of the subscriber in decoded frames, logs, "
               "recordings and timelines");
  app.add_option_function<std::string>(
         "--color",
         [&](const std::string& name) { options.colour = chosen("--color", kColours, name); },
         "auto, always or never; auto honours NO_COLOR")
      ->option_text("WHEN");
  app.add_option("--timeout", options.timeout, "seconds to wait for a reply")
      ->check(CLI::Range(0.001, kMostTimeout))
      ->capture_default_str();
  app.add_option("--instance", options.instance, "the daemon's instance id")->capture_default_str();
  app.add_option("--modem", options.setup.modem, "unix:PATH or qrtr; without it a private modem")
      ->check([](const std::string& modem) {
        bool good = modem == "qrtr" || (modem.rfind("unix:", 0) == 0 && modem.size() > 5);
        return good ? "" : "'" + modem + "' is neither qrtr nor unix:PATH";
      });
  app.add_option("--control", options.setup.control, "control socket of the modem");
  app.add_option("--scenario", options.setup.scenario, "start state of the private modem")
      ->check(CLI::ExistingFile);
  app.add_option("--phone-root", options.setup.phone_root,
                 "folder of the phone's files; without it a private one");
  app.add_option("--daemon-program", options.daemon_executable,
                 "the daemon; without it qorext_client beside qorextctl")
      ->check(CLI::ExistingFile);
  app.add_option("--modem-program", options.setup.modem_executable,
                 "the private modem; without it qorext_modem beside qorextctl")
      ->check(CLI::ExistingFile);
}

CLI::App* add_verb(CLI::App& app, Options& options, Verb verb, const char* name,
                   const char* description, const std::string& footer) {
  CLI::App* command = app.add_subcommand(name, description);
  command->footer(footer + "\n" + kExitStatuses);
  command->fallthrough();
  command->callback([&options, verb] { options.verb = verb; });
  return command;
}

// What CLI11 takes for an option of its own goes back among the words.
void add_modem_option(CLI::App& modem, Options& options, const ModemOption& option) {
  std::string name = option.name;
  auto& words = options.words;
  if (option.kind == ModemOption::Kind::flag) {
    modem.add_flag_callback(
        name, [&words, name] { words.push_back(name); }, option.help);
    return;
  }
  auto* added = modem.add_option_function<std::string>(
      name,
      [&words, name](const std::string& value) {
        words.push_back(name);
        if (!value.empty()) words.push_back(value);
      },
      option.help);
  if (option.kind == ModemOption::Kind::number_or_not) added->expected(0, 1);
}

void add_phone(CLI::App& app, Options& options) {
  CLI::App* phone = add_verb(app, options, Verb::phone, "phone", "prepare or show a phone's root",
                             kPhoneExamples);
  phone->add_option("words", options.words, "prepare (default) or show")
      ->expected(0, 1)
      ->check(CLI::IsMember({"prepare", "show"}));
  PhoneFiles& files = options.phone;
  phone->add_option("--powerup-reason", files.power_up_reason, "0x00020000 is a kernel panic")
      ->capture_default_str();
  phone->add_option("--modem-restarts", files.modem_restarts, "since the boot")
      ->capture_default_str();
  phone->add_option("--ssr-reason", files.ssr_reason, "of the modem's last restart");
  phone->add_option("--hob-seed", files.hob_seed, "makes up the hand-off block's content")
      ->capture_default_str();
  phone->add_option("--hob", files.hob_file, "the hand-off block, 32768 bytes")
      ->check(CLI::ExistingFile);
}

// Only "phone" makes the folder.
void check_phone_root(const Options& options) {
  const std::string& root = options.setup.phone_root;
  if (options.verb == Verb::phone) {
    if (root.empty()) throw CLI::RequiredError("--phone-root");
  } else if (!root.empty() && !CLI::ExistingDirectory(root).empty()) {
    throw CLI::ValidationError("--phone-root", CLI::ExistingDirectory(root));
  }
}

void add_decode(CLI::App& app, Options& options) {
  CLI::App* decode = add_verb(app, options, Verb::decode, "decode",
                              "show what frames or a log hold", kDecodeExamples);
  decode->add_option("words", options.words, "HEX... of one frame; without it lines are read");
  decode
      ->add_option_function<std::string>(
          "--as",
          [&](const std::string& name) { options.decode.as = chosen("--as", kInputs, name); },
          "request, reply, unsolicited or log; without it recognised by itself")
      ->option_text("KIND");
  decode
      ->add_option("--input", options.decode.input, "lines of hex or of a log; - is standard input")
      ->option_text("FILE")
      ->capture_default_str();
}

CLI::Option* add_output(CLI::App& verb, Options& options, const char* help) {
  return verb.add_option("--output", options.output, help)->option_text("FILE");
}

void add_recordings(CLI::App& app, Options& options) {
  add_output(*add_verb(app, options, Verb::record, "record",
                       "a session, with all that is exchanged written to a file", kRecordExamples),
             options, "the recording")
      ->required();
  add_verb(app, options, Verb::replay, "replay",
           "play a recording back against the daemon and show the differences", kReplayExamples)
      ->add_option("words", options.words, "RECORDING")
      ->required()
      ->expected(1);
  CLI::App* trace = add_verb(app, options, Verb::trace, "trace",
                             "a recording as a timeline for Perfetto", kTraceExamples);
  trace->add_option("words", options.words, "RECORDING")->required()->expected(1);
  add_output(*trace, options, "the timeline, Chrome trace event JSON; - is standard output")
      ->default_str("-");
}

void add_load(CLI::App& app, LoadOptions& load, Options& options) {
  constexpr size_t kMostRequests = 10'000'000;
  constexpr double kMostRate = 1'000'000;
  constexpr double kMostSeconds = 86400;
  CLI::App* verb =
      add_verb(app, options, Verb::load, "load", "many requests at a given rate", kLoadExamples);
  verb->add_option("--count", load.count, "requests to send")
      ->check(CLI::Range(size_t{1}, kMostRequests))
      ->capture_default_str();
  verb->add_option("--rate", load.rate, "requests a second; 0 sends one behind the other")
      ->check(CLI::Range(0.0, kMostRate))
      ->capture_default_str();
  auto* mix =
      verb->add_option("--mix", load.mix, "NAME[:WEIGHT],... of requests")->capture_default_str();
  verb->add_option("--mix-file", load.mix_file, "lines of a weight and a session's line")
      ->check(CLI::ExistingFile)
      ->excludes(mix);
  verb->add_option("--seed", load.seed, "of the choice of requests")->capture_default_str();
  verb->add_option("--time-limit", load.time_limit, "seconds for the whole run")
      ->check(CLI::Range(0.001, kMostSeconds))
      ->capture_default_str();
}

void add_verbs(CLI::App& app, Options& options) {
  add_verb(app, options, Verb::request, "request", "send one request and show its reply",
           kRequestExamples)
      ->add_option("words", options.words, "NAME [KEY=VALUE]...")
      ->required();
  add_verb(app, options, Verb::raw, "raw", "send bytes as they are and show the reply",
           kRawExamples)
      ->add_option("words", options.words, "HEX...")
      ->required();
  add_verb(app, options, Verb::session, "session", "requests from standard input, one a line",
           "lines:\n" + session_lines() + kSessionExamples);
  add_verb(app, options, Verb::shell, "shell", "a session at a terminal, with completion",
           kShellKeys + ("lines:\n" + session_lines()) + kShellExamples);
  add_recordings(app, options);
  add_verb(app, options, Verb::list, "list", "all requests, or one with its arguments",
           kListExamples)
      ->add_option("words", options.words, "[NAME]")
      ->expected(0, 1);
  add_decode(app, options);
  add_load(app, options.load, options);
  add_phone(app, options);
  CLI::App* modem = add_verb(app, options, Verb::modem, "modem", "ask a modem's control socket",
                             "commands:\n" + modem_command_help() + "\n" + kModemExamples);
  modem->add_option("words", options.words, "COMMAND [ARGUMENT]...")->required();
  for (const ModemOption& option : modem_options()) add_modem_option(*modem, options, option);
}

// What is wrong has to be told in the right form too, and no parser has got that far then.
bool wants_json(int argc, const char* const* argv) {
  return std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
}

}  // namespace

void describe_command_line(CLI::App& app, Options& options) {
  app.description("Drives qorext_client as the radio interface daemon does.");
  app.name("qorextctl");
  app.set_version_flag("--version", "qorextctl " QOREXT_VERSION);
  app.footer(std::string(kExamples) + kExitStatuses);
  app.require_subcommand(0, 1);
  add_shared_options(app, options);
  add_verbs(app, options);
}

std::vector<std::string> choices_of(const std::string& option) {
  if (option == "--color") return names_of(kColours);
  if (option == "--as") return names_of(kInputs);
  if (option == "--modem") return {"qrtr", "unix:"};
  return {};
}

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

}  // namespace qorextctl
