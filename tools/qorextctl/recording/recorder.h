// SPDX-License-Identifier: Apache-2.0
// Collects what happens while a daemon runs.
#pragma once

#include <fstream>
#include <mutex>

#include "tools/qorextctl/modem/modem_control.h"
#include "tools/qorextctl/recording/recording.h"

namespace qorextctl {

class Recorder {
 public:
  // Creates the file. Without `show_personal` the recording is masked, with it the file private.
  static Result<std::unique_ptr<Recorder>> create(const std::string& path, unsigned instance,
                                                  bool show_personal);

  // Has the modem tell its messages from now on, over its control socket.
  std::optional<Error> watch(const std::string& control, double timeout_seconds);

  // Any thread may add.
  void add_frame(FrameKind kind, View frame);
  void add_log(const std::string& line, int64_t time);  // of the monotonic clock
  void add_exit(const ExitStatus& status);

  // Takes the messages that the modem has told so far. They come on a channel of their own: before
  // this has been called, the last ones may still be on their way.
  void collect();

  // Writes the file; nothing may be added behind. An error also when messages may be missing, of
  // which the file holds what has come.
  std::optional<Error> write();

  const Recording& recording() const { return recording_; }

 private:
  Recorder(const std::string& path, unsigned instance, bool show_personal);
  void add(Event event);
  void add_told(const Json& told);

  std::string path_;
  std::ofstream file_;
  double timeout_seconds_ = 0;
  std::optional<ModemControl> modem_;
  std::optional<Error> lost_;
  int64_t start_;  // of the monotonic clock
  std::mutex mutex_;
  Recording recording_;
};

}  // namespace qorextctl
