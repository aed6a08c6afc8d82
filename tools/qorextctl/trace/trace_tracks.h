// SPDX-License-Identifier: Apache-2.0
// A timeline in the Chrome trace event format, which Perfetto's viewer opens.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

enum class Track { parent, main, callback, hob, modem };

// Times are nanoseconds from the timeline's start.
class TraceTracks {
 public:
  // Slices of a track lie one in another or one behind the other: one that ends behind the end of
  // the one that it begins in is cut there.
  void slice(Track track, std::string name, int64_t begin, int64_t end, Json args);
  void instant(Track track, const std::string& name, int64_t time, Json args);

  // An arrow through the slices that lie on these tracks at these times, at least two.
  struct Stop {
    Track track;
    int64_t time;
  };
  void arrow(const std::string& name, const std::vector<Stop>& stops);

  // {"traceEvents": [...], ...}; events in the order of their times.
  Json finish() const;

 private:
  struct Slice {
    Track track;
    std::string name;
    int64_t begin;
    int64_t end;
    Json args;
  };
  std::vector<Slice> cut_slices() const;

  std::vector<Slice> slices_;
  std::vector<Json> others_;
  int arrows_ = 0;
};

}  // namespace qorextctl
