// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/trace/trace_events.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace qorextctl {

namespace {

// In the order of Track. Viewers sort processes and threads by these numbers.
struct TrackRow {
  int process;
  const char* process_name;
  int thread;
  const char* thread_name;
};
constexpr TrackRow kTracks[] = {
    {1, "parent", 1, "parent"},
    {2, "qorext_client", 2, "main thread"},
    {2, "qorext_client", 3, "callback thread"},
    {2, "qorext_client", 4, "HOB thread"},
    {3, "modem", 5, "modem"},
};

double microseconds(int64_t nanoseconds) { return static_cast<double>(nanoseconds) / 1000; }

Json event(const char* phase, const std::string& name, Track track, int64_t time) {
  const TrackRow& row = kTracks[static_cast<size_t>(track)];
  return {{"ph", phase},
          {"name", name},
          {"pid", row.process},
          {"tid", row.thread},
          {"ts", microseconds(time)}};
}

Json track_names() {
  Json events = Json::array();
  for (const TrackRow& row : kTracks) {
    auto add = [&](const char* what, const char* key, const Json& value) {
      Json args = {{key, value}};
      events.push_back(
          {{"ph", "M"}, {"name", what}, {"pid", row.process}, {"tid", row.thread}, {"args", args}});
    };
    add("process_name", "name", row.process_name);
    add("process_sort_index", "sort_index", row.process);
    add("thread_name", "name", row.thread_name);
    add("thread_sort_index", "sort_index", row.thread);
  }
  return events;
}

}  // namespace

void TraceEvents::slice(Track track, const std::string& name, int64_t begin, int64_t end,
                        const Json& args) {
  Json made = event("X", name, track, begin);
  made["dur"] = nullptr;  // set by finish()
  made["args"] = args;
  entries_.push_back({track, begin, std::max(begin, end), true, std::move(made)});
}

void TraceEvents::instant(Track track, const std::string& name, int64_t time, const Json& args) {
  Json made = event("i", name, track, time);
  made["s"] = "t";
  made["args"] = args;
  entries_.push_back({track, time, time, false, std::move(made)});
}

void TraceEvents::arrow(const std::string& name, const std::vector<Stop>& stops) {
  ++arrows_;
  for (size_t i = 0; i < stops.size(); ++i) {
    const auto& [track, time] = stops[i];
    bool is_last = i + 1 == stops.size();
    Json made = event(i == 0 ? "s" : is_last ? "f" : "t", name, track, time);
    made["cat"] = "request";
    made["id"] = arrows_;
    if (is_last) made["bp"] = "e";
    entries_.push_back({track, time, time, false, std::move(made)});
  }
}

Json TraceEvents::finish() {
  // An outer slice comes before those that begin with it, slices before other events.
  std::stable_sort(entries_.begin(), entries_.end(), [](const Entry& left, const Entry& right) {
    return std::tie(left.begin, right.is_slice, right.end) <
           std::tie(right.begin, left.is_slice, left.end);
  });
  Json events = track_names();
  std::map<Track, std::vector<int64_t>> open;  // the ends of the enclosing slices
  for (Entry& entry : entries_) {
    if (entry.is_slice) {
      auto& ends = open[entry.track];
      while (!ends.empty() && ends.back() <= entry.begin) ends.pop_back();
      ends.push_back(ends.empty() ? entry.end : std::min(entry.end, ends.back()));
      entry.event["dur"] = microseconds(ends.back() - entry.begin);
    }
    events.push_back(std::move(entry.event));
  }
  entries_.clear();
  return {{"traceEvents", std::move(events)}, {"displayTimeUnit", "ms"}};
}

}  // namespace qorextctl
