#include "cli.h"

#include <CLI/CLI.hpp>
#include <sstream>

#include "modem_control.h"
#include "modem_options.h"

namespace qorextctl {

namespace {

constexpr double kMostTimeout = 3600;

constexpr const char* kExamples = R"(examples:
  qorextctl list                                      every request
  qorextctl list set-nam                              one request's arguments
  qorextctl request nv-read rde-id=28                 with a private modem
  qorextctl request get-nam --json > nam.json         edit it, then:
  qorextctl request set-nam spc=000000 json=nam.json
  qorextctl raw 07000002 0000000000000000 000000000000  bytes as they are
  printf 'modem indicate notify\nwait-unsol\n' | qorextctl session
  qorextctl --modem unix:/run/m.sock --control /run/c.sock session
  qorextctl --control /run/c.sock modem nv 28 0A
  qorextctl --phone-root phone phone prepare          a root to keep
  qorextctl --phone-root phone phone show             logs, properties, DropBox

exit status:
  0  success reply
  1  a reply carried a failure status or was malformed
  2  wrong usage: nothing was sent, nothing was started
  3  no reply in time, the daemon ended, or the modem is not reachable
)";

void add_shared_options(CLI::App& app, Options& options) {
  app.add_flag("--json", options.json, "one JSON object a line");
  app.add_flag("--log", options.log, "show the daemon's log on standard error");
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
                   const char* description) {
  CLI::App* command = app.add_subcommand(name, description);
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
  CLI::App* phone = add_verb(app, options, Verb::phone, "phone", "prepare or show a phone's root");
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

void add_verbs(CLI::App& app, Options& options) {
  add_verb(app, options, Verb::request, "request", "send one request and show its reply")
      ->add_option("words", options.words, "NAME [KEY=VALUE]...")
      ->required();
  add_verb(app, options, Verb::raw, "raw", "send bytes as they are and show the reply")
      ->add_option("words", options.words, "HEX...")
      ->required();
  add_verb(app, options, Verb::session, "session", "requests from standard input, one a line")
      ->footer(
          "lines: NAME [KEY=VALUE]...  raw HEX  modem COMMAND...  wait-unsol [N] [SECONDS]  "
          "wait-property NAME VALUE [SECONDS]  wait-log TEXT [N] [SECONDS]  phone show  "
          "expect-failure LINE  # comment");
  add_verb(app, options, Verb::list, "list", "all requests, or one with its arguments")
      ->add_option("words", options.words, "[NAME]")
      ->expected(0, 1);
  add_phone(app, options);
  CLI::App* modem = add_verb(app, options, Verb::modem, "modem", "ask a modem's control socket");
  modem->add_option("words", options.words, "COMMAND [ARGUMENT]...")->required();
  modem->footer("commands:\n" + modem_command_help());
  for (const ModemOption& option : modem_options()) add_modem_option(*modem, options, option);
}

}  // namespace

Parsed parse_command_line(int argc, const char* const* argv) {
  Parsed parsed;
  CLI::App app("Drives qorext_client as the radio interface daemon does.", "qorextctl");
  app.set_version_flag("--version", "qorextctl " QOREXT_VERSION);
  app.footer(kExamples);
  app.require_subcommand(0, 1);
  add_shared_options(app, parsed.options);
  add_verbs(app, parsed.options);
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) throw CLI::RequiredError("a command");
    check_phone_root(parsed.options);
    parsed.proceed = true;
    parsed.options.setup.timeout_seconds = parsed.options.timeout;
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    bool asked = app.exit(error, text, text) == 0;
    parsed.exit_status = asked ? 0 : static_cast<int>(Outcome::usage);
    parsed.text = asked ? text.str()
                        : std::string("qorextctl: ") + error.what() + " (see: qorextctl --help)\n";
  }
  return parsed;
}

}  // namespace qorextctl
