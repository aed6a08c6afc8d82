// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay.h"

#include <fmt/format.h>

#include "tools/qorextctl/replay/replay_player.h"

namespace qorextctl {

namespace {

std::optional<Error> what_hinders(const std::string& path, const LaunchOptions& options,
                                  const Recording& recording) {
  if (!options.setup.modem.empty()) {
    return usage_error("replay: --modem is not for replays, the recording is the modem");
  }
  const Event* masked = first_masked(recording);
  if (!masked) return std::nullopt;
  return usage_error(fmt::format(
      "{}: line {}: personal data is masked; record with --show-personal what is to be replayed",
      path, masked->line));
}

}  // namespace

Outcome replay(const std::string& path, const LaunchOptions& options, bool show_personal,
               Printer& printer) {
  auto recording = read_recording(path);
  auto error = recording ? what_hinders(path, options, *recording) : recording.error();
  if (error) {
    printer.error(*error);
    return error->outcome;
  }
  LaunchOptions own = options;
  own.instance = recording->instance;
  ReplayPlayer player(*recording, show_personal, printer);
  if (auto hindrance = player.start(own)) {
    printer.error(*hindrance);
    return hindrance->outcome;
  }
  player.run();
  return player.finish(path);
}

}  // namespace qorextctl
