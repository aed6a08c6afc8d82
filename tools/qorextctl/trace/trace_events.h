// SPDX-License-Identifier: Apache-2.0
// Events in the Chrome trace event format, which Perfetto's viewer opens.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

enum class Track { parent, main, callback, hob, modem };

// Times are nanoseconds from the start of the timeline.
class TraceEvents {
 public:
  // Slices of a track nest. One that ends after the slice that it begins in is cut at that end.
  void slice(Track track, const std::string& name, int64_t begin, int64_t end,
             const Json& args = Json::object());
  void instant(Track track, const std::string& name, int64_t time,
               const Json& args = Json::object());

  // An arrow through the slices at these times of these tracks, at least two.
  struct Stop {
    Track track;
    int64_t time;
  };
  void arrow(const std::string& name, const std::vector<Stop>& stops);

  // Returns {"traceEvents": [...], ...} with the events in order of time, and removes them.
  Json finish();

 private:
  struct Entry {
    Track track;
    int64_t begin;
    int64_t end;
    bool is_slice;
    Json event;
  };
  std::vector<Entry> entries_;
  int arrows_ = 0;
};

}  // namespace qorextctl
