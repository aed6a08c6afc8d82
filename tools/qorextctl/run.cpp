// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/run.h"

#include <fmt/format.h>
#include <unistd.h>

#include "tools/qorextctl/decode_input.h"
#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/load/load.h"
#include "tools/qorextctl/modem/ask_modem.h"
#include "tools/qorextctl/phone/phone_report.h"
#include "tools/qorextctl/recording/recorder.h"
#include "tools/qorextctl/replay/replay.h"
#include "tools/qorextctl/session/session.h"
#include "tools/qorextctl/shell/shell.h"
#include "tools/qorextctl/trace/trace.h"

namespace qorextctl {

namespace {

Outcome fail(Printer& printer, const Error& error) {
  printer.error(error);
  return error.outcome;
}

Outcome run_one(const Options& options, Printer& printer, View request, const Request* named) {
  auto session = Session::start(options, printer);
  if (!session) return fail(printer, session.error());
  Outcome outcome = (*session)->send(request, named);
  return (*session)->finish(outcome, false);
}

Outcome run_request(const Options& options, Printer& printer) {
  auto command = parse_command(options.words, true);
  if (!command) return fail(printer, command.error());
  return run_one(options, printer, command->bytes, command->request);
}

Outcome run_raw(const Options& options, Printer& printer) {
  auto bytes = parse_raw(options.words);
  if (!bytes) return fail(printer, bytes.error());
  printer.show_hex(true);
  return run_one(options, printer, *bytes, nullptr);
}

Outcome run_session(const Options& options, Printer& printer) {
  auto session = Session::start(options, printer);
  if (!session) return fail(printer, session.error());
  bool is_shell = options.verb == Verb::shell;
  Outcome outcome = is_shell ? run_shell(**session, printer) : (*session)->run_lines(STDIN_FILENO);
  return (*session)->finish(outcome, true);
}

void print_summary(const Options& options, const Recording& recording, Printer& printer) {
  const char* masking = recording.masked ? "personal data is masked" : "with all personal data";
  size_t count = recording.events.size();
  printer.result({{"type", "recording"},
                  {"file", options.output},
                  {"events", count},
                  {"masked", recording.masked}},
                 fmt::format("{}: {} events, {}", options.output, count, masking));
}

Outcome run_record(const Options& options, Printer& printer) {
  auto recorder = Recorder::create(options.output, options.instance, options.show_personal);
  if (!recorder) return fail(printer, recorder.error());
  auto session = Session::start(options, printer, recorder->get());
  if (!session) return fail(printer, session.error());
  Outcome outcome = (*session)->run_lines(STDIN_FILENO);
  outcome = (*session)->finish(outcome, true);
  print_summary(options, (*recorder)->recording(), printer);
  return outcome;
}

Outcome run_load(const Options& options, Printer& printer) {
  auto mix = mix_of(options.load);
  if (!mix) return fail(printer, mix.error());
  auto session = Session::start(options, printer);
  if (!session) return fail(printer, session.error());
  Outcome outcome = run_load(**session, options.load, *mix, printer);
  return (*session)->finish(outcome, false);
}

Outcome run_list(const Options& options, Printer& printer) {
  std::vector<const Request*> chosen;
  for (const Request& request : catalogue()) {
    if (options.words.empty() || options.words[0] == request.name) chosen.push_back(&request);
  }
  if (chosen.empty()) return fail(printer, unknown_request(options.words[0]));
  printer.request_list(chosen);
  return Outcome::success;
}

Outcome run_modem(const Options& options, Printer& printer) {
  auto outcome = ask_modem(options.words, options.setup.control, options.timeout, printer);
  return outcome ? *outcome : fail(printer, outcome.error());
}

Outcome run_phone(const Options& options, Printer& printer) {
  const std::string& root = options.setup.phone_root;
  bool is_show = !options.words.empty() && options.words[0] == "show";
  auto error = is_show ? std::nullopt : prepare_phone(root, options.phone);
  if (error) return fail(printer, *error);
  if (is_show) printer.phone(root, phone_report(root));
  return Outcome::success;
}

Outcome dispatch(const Options& options, Printer& printer) {
  switch (options.verb) {
    case Verb::request:
      return run_request(options, printer);
    case Verb::raw:
      return run_raw(options, printer);
    case Verb::session:
    case Verb::shell:
      return run_session(options, printer);
    case Verb::load:
      return run_load(options, printer);
    case Verb::decode:
      return decode_input(options.words, options.decode, options.show_personal, printer);
    case Verb::record:
      return run_record(options, printer);
    case Verb::replay:
      return replay(options.words[0], options, options.show_personal, printer);
    case Verb::trace:
      return write_trace(options.words[0], options.output, options.show_personal, printer);
    case Verb::modem:
      return run_modem(options, printer);
    case Verb::phone:
      return run_phone(options, printer);
    default:
      return run_list(options, printer);
  }
}

}  // namespace

int run(const Options& options, Printer& printer) {
  printer.show_personal(options.show_personal);
  return static_cast<int>(dispatch(options, printer));
}

}  // namespace qorextctl
