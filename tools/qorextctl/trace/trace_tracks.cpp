// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/trace/trace_tracks.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace qorextctl {

namespace {

constexpr double kNanosecondsAMicrosecond = 1000;

// The numbers only tell processes and threads apart, and give their order from top to bottom.
struct TrackRow {
  Track track;
  int process;
  const char* process_name;
  int thread;
  const char* thread_name;
};
constexpr TrackRow kTracks[] = {
    {Track::parent, 1, "parent", 1, "parent"},
    {Track::main, 2, "qorext_client", 2, "main thread"},
    {Track::callback, 2, "qorext_client", 3, "callback thread"},
    {Track::hob, 2, "qorext_client", 4, "HOB thread"},
    {Track::modem, 3, "modem", 5, "modem"},
};

const TrackRow& row_of(Track track) { return kTracks[static_cast<size_t>(track)]; }

Json event(const char* phase, const std::string& name, Track track, int64_t time) {
  return {{"ph", phase},
          {"name", name},
          {"pid", row_of(track).process},
          {"tid", row_of(track).thread},
          {"ts", static_cast<double>(time) / kNanosecondsAMicrosecond}};
}

Json metadata(const char* what, const TrackRow& row, const char* key, const Json& value) {
  return {{"ph", "M"},
          {"name", what},
          {"pid", row.process},
          {"tid", row.thread},
          {"args", {{key, value}}}};
}

void add_names(Json& events) {
  for (const TrackRow& row : kTracks) {
    events.push_back(metadata("process_name", row, "name", row.process_name));
    events.push_back(metadata("process_sort_index", row, "sort_index", row.process));
    events.push_back(metadata("thread_name", row, "name", row.thread_name));
    events.push_back(metadata("thread_sort_index", row, "sort_index", row.thread));
  }
}

}  // namespace

void TraceTracks::slice(Track track, std::string name, int64_t begin, int64_t end, Json args) {
  slices_.push_back({track, std::move(name), begin, std::max(begin, end), std::move(args)});
}

void TraceTracks::instant(Track track, const std::string& name, int64_t time, Json args) {
  Json made = event("i", name, track, time);
  made["s"] = "t";
  made["args"] = std::move(args);
  others_.push_back(std::move(made));
}

void TraceTracks::arrow(const std::string& name, const std::vector<Stop>& stops) {
  ++arrows_;
  for (size_t i = 0; i < stops.size(); ++i) {
    bool is_last = i + 1 == stops.size();
    const char* phase = i == 0 ? "s" : is_last ? "f" : "t";
    Json made = event(phase, name, stops[i].track, stops[i].time);
    made["cat"] = "request";
    made["id"] = arrows_;
    if (is_last) made["bp"] = "e";
    others_.push_back(std::move(made));
  }
}

std::vector<TraceTracks::Slice> TraceTracks::cut_slices() const {
  std::vector<Slice> slices = slices_;
  std::stable_sort(slices.begin(), slices.end(), [](const Slice& left, const Slice& right) {
    return std::tie(left.begin, right.end) < std::tie(right.begin, left.end);
  });
  std::map<Track, std::vector<int64_t>> open;  // the ends of the slices around
  for (Slice& slice : slices) {
    auto& ends = open[slice.track];
    while (!ends.empty() && ends.back() <= slice.begin) ends.pop_back();
    if (!ends.empty()) slice.end = std::min(slice.end, ends.back());
    ends.push_back(slice.end);
  }
  return slices;
}

Json TraceTracks::finish() const {
  std::vector<Json> timed;
  for (const Slice& slice : cut_slices()) {
    Json made = event("X", slice.name, slice.track, slice.begin);
    made["dur"] = static_cast<double>(slice.end - slice.begin) / kNanosecondsAMicrosecond;
    made["args"] = slice.args;
    timed.push_back(std::move(made));
  }
  timed.insert(timed.end(), others_.begin(), others_.end());
  std::stable_sort(timed.begin(), timed.end(), [](const Json& left, const Json& right) {
    return left["ts"].get<double>() < right["ts"].get<double>();
  });
  Json events = Json::array();
  add_names(events);
  for (Json& made : timed) events.push_back(std::move(made));
  return {{"traceEvents", std::move(events)}, {"displayTimeUnit", "ms"}};
}

}  // namespace qorextctl
