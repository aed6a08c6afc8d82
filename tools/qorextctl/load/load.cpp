// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/load/load.h"

#include <fmt/format.h>
#include <unistd.h>

#include <thread>

#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/load/engine.h"
#include "tools/qorextctl/load/load_report.h"

namespace qorextctl {

namespace {

using Clock = Deadline::Clock;

// The daemon refuses it without asking the modem.
const std::vector<std::string> kHarmless = {"obsolete-bb"};

// Shows the progress in place of frames.
class ProgressScreen {
 public:
  ProgressScreen(Printer& printer, size_t count)
      : printer_(printer), progress_(count, STDERR_FILENO) {
    printer_.share_screen_with(&progress_);
    printer_.show_frames(false);
  }
  ~ProgressScreen() {
    printer_.share_screen_with(nullptr);
    printer_.show_frames(true);
  }
  ProgressScreen(const ProgressScreen&) = delete;
  ProgressScreen& operator=(const ProgressScreen&) = delete;

  void update(size_t done) { progress_.update(done); }

 private:
  Printer& printer_;
  Progress progress_;
};

// The daemon replies once it has found the modem. That time does not count as latency.
Outcome wait_until_serving(Session& session) {
  auto harmless = parse_command(kHarmless, false);
  Outcome outcome = session.exchange(harmless->bytes, harmless->request);
  return outcome == Outcome::transport ? outcome : Outcome::success;
}

// Reads what the daemon sends meanwhile: its writes block when nothing reads. Sleeps for the last
// part, which is shorter than the resolution of poll(). Returns false when the session is over.
bool wait_until(Session& session, Clock::time_point time) {
  constexpr auto kCoarse = std::chrono::milliseconds(2);
  auto left = std::chrono::floor<std::chrono::milliseconds>(time - Clock::now() - kCoarse);
  if (left.count() > 0) session.take_until(Deadline::in(left));
  if (!session.over()) std::this_thread::sleep_until(time);
  return !session.over();
}

Outcome result_of(const MixEntry& entry, Outcome outcome) {
  if (!entry.expects_failure || outcome > Outcome::refused) return outcome;
  return outcome == Outcome::refused ? Outcome::success : Outcome::refused;
}

}  // namespace

Result<Mix> mix_of(const LoadOptions& options) {
  return options.mix_file.empty() ? Mix::parse(options.mix) : Mix::read(options.mix_file);
}

Outcome run_load(Session& session, const LoadOptions& options, const Mix& mix, Printer& printer) {
  LoadReport report;
  Outcome worst = Outcome::success;
  {
    ProgressScreen screen(printer, options.count);
    Outcome start = wait_until_serving(session);
    if (start != Outcome::success) return start;
    Deadline limit = Deadline::in_seconds(options.time_limit);
    std::mt19937 random(options.seed);
    const MixEntry* entry = nullptr;
    Outcome outcome = Outcome::success;
    auto wait = [&](size_t number, Clock::time_point due) {
      if (session.over() || limit.passed()) return false;
      screen.update(number);
      entry = &mix.choose(random);
      return wait_until(session, due);
    };
    auto exchange = [&] { outcome = session.exchange(entry->bytes, entry->request); };
    auto add = [&](const Timing& timing) {
      outcome = result_of(*entry, outcome);
      worst = std::max(worst, outcome);
      report.add(entry->name, timing, outcome != Outcome::success);
    };
    report.set_seconds(run_exchanges(options.count, options.rate, wait, exchange, add));
    bool is_complete = report.count() == options.count;
    if (!is_complete) worst = Outcome::transport;
    if (!is_complete && limit.passed()) {
      printer.error(
          transport_error(fmt::format("{} of {} requests were sent within {} s", report.count(),
                                      options.count, options.time_limit)));
    }
  }
  printer.results(report.objects(), report.text());
  return worst;
}

}  // namespace qorextctl
