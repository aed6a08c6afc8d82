// SPDX-License-Identifier: Apache-2.0
// Collects frames, messages and log lines while a daemon runs.
#pragma once

#include <fstream>
#include <mutex>

#include "tools/qorextctl/modem/modem_control.h"
#include "tools/qorextctl/recording/recording.h"

namespace qorextctl {

class Recorder {
 public:
  // Creates the file. Without `show_personal` personal data is masked; with it only the owner can
  // read the file.
  static Result<std::unique_ptr<Recorder>> create(const std::string& path, unsigned instance,
                                                  bool show_personal);

  // Subscribes to the messages of the modem with this control socket.
  std::optional<Error> watch(const std::string& control, double timeout_seconds);

  // Thread-safe.
  void add_frame(FrameKind kind, View frame);
  void add_log(const std::string& line, int64_t time);  // monotonic clock
  void add_exit(const ExitStatus& status);

  // Adds the messages that the modem has reported since the last call. Returns when there are no
  // more in transit.
  void collect();

  // Writes the file. Must be called last. Also returns an error when messages may be missing; then
  // the file holds those that were received.
  std::optional<Error> write();

  const Recording& recording() const { return recording_; }

 private:
  Recorder(std::string path, std::ofstream file, unsigned instance, bool show_personal);
  void add(Event event);
  void add_report(const Json& report);

  std::string path_;
  std::ofstream file_;
  double timeout_seconds_ = 0;
  std::optional<ModemControl> modem_;
  std::optional<Error> lost_;
  int64_t start_;  // monotonic clock
  std::mutex mutex_;
  Recording recording_;
};

}  // namespace qorextctl
