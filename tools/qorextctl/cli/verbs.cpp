// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/cli/verbs.h"

#include <CLI/CLI.hpp>
#include <map>

#include "tools/qorextctl/cli/help_text.h"
#include "tools/qorextctl/modem/modem_words.h"
#include "tools/qorextctl/session/session.h"

namespace qorextctl {

namespace {

const std::map<std::string, InputKind> kInputs = {
    {"request", InputKind::request},
    {"reply", InputKind::reply},
    {"unsolicited", InputKind::unsolicited},
    {"log", InputKind::log},
};

CLI::App* add_verb(CLI::App& app, Options& options, Verb verb, const char* name,
                   const char* description, const std::string& footer) {
  CLI::App* command = app.add_subcommand(name, description);
  command->footer(footer + "\n" + kExitStatuses);
  command->fallthrough();
  command->callback([&options, verb] { options.verb = verb; });
  return command;
}

// CLI11 would reject the options of a modem command: they are declared, and put back into the
// words.
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
  phone
      ->add_option("--powerup-reason", files.power_up_reason,
                   "power-up reason; 0x00020000: kernel panic")
      ->capture_default_str();
  phone->add_option("--modem-restarts", files.modem_restarts, "modem restarts since boot")
      ->capture_default_str();
  phone->add_option("--ssr-reason", files.ssr_reason, "reason of the last modem restart");
  phone->add_option("--hob-seed", files.hob_seed, "seed of the hand-off block's content")
      ->capture_default_str();
  phone->add_option("--hob", files.hob_file, "the hand-off block, 32768 bytes")
      ->check(CLI::ExistingFile);
}

void add_decode(CLI::App& app, Options& options) {
  CLI::App* decode = add_verb(app, options, Verb::decode, "decode",
                              "decode frames, or the hex dumps of a log", kDecodeExamples);
  decode->add_option("words", options.words, "HEX... of one frame; default: reads lines");
  decode
      ->add_option_function<std::string>(
          "--as", [&](const std::string& name) { options.decode.as = kInputs.at(name); },
          "request, reply, unsolicited or log; default: recognised")
      ->check(CLI::IsMember(kInputs))
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
  add_output(
      *add_verb(app, options, Verb::record, "record",
                "run a session and write all frames and messages to a file", kRecordExamples),
      options, "the recording")
      ->required();
  add_verb(app, options, Verb::replay, "replay",
           "replay a recording against the daemon and show the differences", kReplayExamples)
      ->add_option("words", options.words, "RECORDING")
      ->required()
      ->expected(1);
  CLI::App* trace = add_verb(app, options, Verb::trace, "trace",
                             "write a recording as a timeline for Perfetto", kTraceExamples);
  trace->add_option("words", options.words, "RECORDING")->required()->expected(1);
  add_output(*trace, options, "the timeline, Chrome trace event JSON; - is standard output")
      ->default_str("-");
}

void add_load(CLI::App& app, LoadOptions& load, Options& options) {
  constexpr size_t kMaxRequests = 10'000'000;
  constexpr double kMaxRate = 1'000'000;
  constexpr double kMaxSeconds = 86400;
  CLI::App* verb = add_verb(app, options, Verb::load, "load", "send many requests at a given rate",
                            kLoadExamples);
  verb->add_option("--count", load.count, "requests to send")
      ->check(CLI::Range(size_t{1}, kMaxRequests))
      ->capture_default_str();
  verb->add_option("--rate", load.rate,
                   "requests per second; 0: each after the reply to the previous one")
      ->check(CLI::Range(0.0, kMaxRate))
      ->capture_default_str();
  auto* mix =
      verb->add_option("--mix", load.mix, "NAME[:WEIGHT],... of requests")->capture_default_str();
  verb->add_option("--mix-file", load.mix_file, "lines with a weight and a session line")
      ->check(CLI::ExistingFile)
      ->excludes(mix);
  verb->add_option("--seed", load.seed, "seed for the choice of requests")->capture_default_str();
  verb->add_option("--time-limit", load.time_limit, "seconds for the whole run")
      ->check(CLI::Range(0.001, kMaxSeconds))
      ->capture_default_str();
}

}  // namespace

void add_verbs(CLI::App& app, Options& options) {
  add_verb(app, options, Verb::request, "request", "send one request and show its reply",
           kRequestExamples)
      ->add_option("words", options.words, "NAME [KEY=VALUE]...")
      ->required();
  add_verb(app, options, Verb::raw, "raw", "send raw bytes and show the reply", kRawExamples)
      ->add_option("words", options.words, "HEX...")
      ->required();
  add_verb(app, options, Verb::session, "session",
           "run lines with requests and commands from standard input",
           "lines:\n" + session_lines() + kSessionExamples);
  add_verb(app, options, Verb::shell, "shell", "run a session at a terminal, with completion",
           kShellKeys + ("lines:\n" + session_lines()) + kShellExamples);
  add_recordings(app, options);
  add_verb(app, options, Verb::list, "list", "list all requests, or the arguments of one",
           kListExamples)
      ->add_option("words", options.words, "[NAME]")
      ->expected(0, 1);
  add_decode(app, options);
  add_load(app, options.load, options);
  add_phone(app, options);
  CLI::App* modem =
      add_verb(app, options, Verb::modem, "modem", "send a command to a modem's control socket",
               "commands:\n" + modem_command_help() + "\n" + kModemExamples);
  modem->add_option("words", options.words, "COMMAND [ARGUMENT]...")->required();
  for (const ModemOption& option : modem_options()) add_modem_option(*modem, options, option);
}

}  // namespace qorextctl
