// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/trace/trace.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <fstream>
#include <iostream>

#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/recording/recording.h"
#include "tools/qorextctl/trace/timeline.h"

namespace qorextctl {

namespace {

Outcome fail(const Error& error, Printer& printer) {
  printer.error(error);
  return error.outcome;
}

std::vector<Json> shown(const Recording& recording, bool show_personal) {
  EventText text(show_personal);
  std::vector<Json> events;
  for (const Event& event : recording.events) events.push_back(text.show(event));
  return events;
}

}  // namespace

Outcome write_trace(const std::string& path, const std::string& output, bool show_personal,
                    Printer& printer) {
  auto recording = read_recording(path);
  if (!recording) return fail(recording.error(), printer);
  std::string text = timeline(shown(*recording, show_personal))
                         .dump(-1, ' ', false, Json::error_handler_t::replace);
  if (output.empty() || output == "-") {
    std::cout << text << '\n';
    return Outcome::success;
  }
  bool is_ready = !show_personal || open_private(output, O_TRUNC).valid();
  std::ofstream file(output);
  if (!is_ready || !file) return fail(usage_error("trace: cannot write '" + output + "'"), printer);
  if (file << text << '\n' << std::flush) return Outcome::success;
  return fail({Outcome::broken, "trace: '" + output + "' cannot be written"}, printer);
}

}  // namespace qorextctl
