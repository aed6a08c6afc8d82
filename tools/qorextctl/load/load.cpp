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

class Load {
 public:
  Load(Session& session, const LoadOptions& options, const Mix& mix, Printer& printer)
      : session_(session),
        options_(options),
        mix_(mix),
        printer_(printer),
        random_(options.seed),
        progress_(options.count, STDERR_FILENO) {
    printer_.share_screen_with(&progress_);
    printer_.show_frames(false);
  }
  ~Load() {
    printer_.share_screen_with(nullptr);
    printer_.show_frames(true);
  }
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;

  // The daemon replies once it has found the modem. That time does not count as latency.
  Outcome wait_until_serving() {
    auto harmless = parse_command(kHarmless, false);
    Outcome outcome = session_.exchange(harmless->bytes, harmless->request);
    return outcome == Outcome::transport ? outcome : Outcome::success;
  }

  LoadReport run() {
    limit_ = Deadline::in_seconds(options_.time_limit);
    const MixEntry* entry = nullptr;
    Outcome outcome = Outcome::success;
    double seconds = run_exchanges(
        options_.count, options_.rate,
        [&](size_t number, Clock::time_point due) {
          if (session_.over() || limit_.passed()) return false;
          progress_.update(number);
          entry = &mix_.choose(random_);
          wait_until(due);
          return !session_.over();
        },
        [&] { outcome = session_.exchange(entry->bytes, entry->request); },
        [&](const Timing& timing) { add(*entry, outcome, timing); });
    report_.set_seconds(seconds);
    return report_;
  }

  Outcome outcome() const {
    if (report_.count() == options_.count) return worst_;
    if (limit_.passed()) {
      printer_.error(
          transport_error(fmt::format("{} of {} requests were sent within {} s", report_.count(),
                                      options_.count, options_.time_limit)));
    }
    return Outcome::transport;
  }

 private:
  // Reads what the daemon sends meanwhile: its writes block when nothing reads. Sleeps for the last
  // part, which is shorter than the resolution of poll().
  void wait_until(Clock::time_point time) {
    constexpr auto kCoarse = std::chrono::milliseconds(2);
    auto left = std::chrono::floor<std::chrono::milliseconds>(time - Clock::now() - kCoarse);
    if (left.count() > 0) session_.take_until(Deadline::in(left));
    if (!session_.over()) std::this_thread::sleep_until(time);
  }

  void add(const MixEntry& entry, Outcome outcome, const Timing& timing) {
    if (entry.wants_failure && outcome <= Outcome::refused) {
      outcome = outcome == Outcome::refused ? Outcome::success : Outcome::refused;
    }
    worst_ = std::max(worst_, outcome);
    report_.add(entry.name, timing, outcome != Outcome::success);
  }

  Session& session_;
  const LoadOptions& options_;
  const Mix& mix_;
  Printer& printer_;
  Deadline limit_ = Deadline::in_seconds(0);  // starts with the first request
  std::mt19937 random_;
  Progress progress_;
  LoadReport report_;
  Outcome worst_ = Outcome::success;
};

}  // namespace

Result<Mix> mix_of(const LoadOptions& options) {
  return options.mix_file.empty() ? Mix::parse(options.mix) : Mix::read(options.mix_file);
}

Outcome run_load(Session& session, const LoadOptions& options, const Mix& mix, Printer& printer) {
  Outcome outcome = Outcome::success;
  LoadReport report;
  {
    Load load(session, options, mix, printer);
    outcome = load.wait_until_serving();
    if (outcome != Outcome::success) return outcome;
    report = load.run();
    outcome = load.outcome();
  }
  printer.results(report.objects(), report.text());
  return outcome;
}

}  // namespace qorextctl
