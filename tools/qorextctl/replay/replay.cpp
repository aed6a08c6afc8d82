// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay.h"

#include <fmt/format.h>

#include "tools/qorextctl/replay/replay_player.h"

namespace qorextctl {

namespace {

std::optional<Error> what_hinders(const Options& options, const Recording& recording) {
  if (!options.setup.modem.empty()) {
    return usage_error("replay: --modem is not for replays, the recording is the modem");
  }
  const Event* masked = first_masked(recording);
  if (!masked) return std::nullopt;
  return usage_error(fmt::format(
      "{}: line {}: personal data is masked; record with --show-personal what is to be replayed",
      options.words[0], masked->line));
}

}  // namespace

Outcome replay(const Options& options, Printer& printer) {
  auto recording = read_recording(options.words[0]);
  auto error = recording ? what_hinders(options, *recording) : recording.error();
  if (error) {
    printer.error(*error);
    return error->outcome;
  }
  Options own = options;
  own.instance = recording->instance;
  ReplayPlayer player(*recording, own, printer);
  if (auto hindrance = player.start(own)) {
    printer.error(*hindrance);
    return hindrance->outcome;
  }
  player.run();
  return player.finish(options.words[0]);
}

}  // namespace qorextctl
