// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/load/load.h"

#include <fmt/format.h>
#include <unistd.h>

#include <thread>

#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/load/load_report.h"
#include "tools/qorextctl/load/progress.h"

namespace qorextctl {

namespace {

using Clock = Deadline::Clock;

// Answered by the daemon itself, with a refusal.
const std::vector<std::string> kHarmless = {"obsolete-bb"};

float milliseconds(Clock::duration time) {
  return std::chrono::duration<float, std::milli>(time).count();
}

double seconds_since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

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

  // The daemon answers when it has found the modem: its start is no request's latency.
  Outcome wait_until_serving() {
    auto harmless = parse_command(kHarmless, false);
    Outcome outcome = session_.exchange(harmless->bytes, harmless->request);
    return outcome == Outcome::transport ? outcome : Outcome::success;
  }

  LoadReport run() {
    limit_ = Deadline::in_seconds(options_.time_limit);
    auto start = Clock::now();
    for (size_t i = 0; i < options_.count && !session_.over() && !limit_.passed(); ++i) {
      progress_.update(i);
      send(mix_.choose(random_), due(start, i));
    }
    report_.set_seconds(seconds_since(start));
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
  Clock::time_point due(Clock::time_point start, size_t number) const {
    if (options_.rate <= 0) return Clock::now();
    std::chrono::duration<double> behind(static_cast<double>(number) / options_.rate);
    return start + std::chrono::duration_cast<Clock::duration>(behind);
  }

  // What comes meanwhile is taken: the daemon would wait for its reader else. The last bit is less
  // than a poll can measure.
  void wait_until(Clock::time_point time) {
    constexpr auto kCoarse = std::chrono::milliseconds(2);
    auto left = std::chrono::floor<std::chrono::milliseconds>(time - Clock::now() - kCoarse);
    if (left.count() > 0) session_.take_until(Deadline::in(left));
    if (!session_.over()) std::this_thread::sleep_until(time);
  }

  void send(const MixEntry& entry, Clock::time_point due) {
    wait_until(due);
    if (session_.over()) return;
    auto sent = Clock::now();
    Outcome outcome = session_.exchange(entry.bytes, entry.request);
    auto answered = Clock::now();
    bool is_wanted = entry.wants_failure && outcome == Outcome::refused;
    if (entry.wants_failure && outcome == Outcome::success) outcome = Outcome::refused;
    if (is_wanted) outcome = Outcome::success;
    worst_ = std::max(worst_, outcome);
    report_.add(entry.name, {milliseconds(answered - due), milliseconds(answered - sent),
                             outcome != Outcome::success});
  }

  Session& session_;
  const LoadOptions& options_;
  const Mix& mix_;
  Printer& printer_;
  Deadline limit_ = Deadline::in_seconds(0);  // counts from the first request
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
