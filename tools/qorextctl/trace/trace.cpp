// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/trace/trace.h"

#include <iostream>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "tools/qorextctl/log/log_line.h"
#include "tools/qorextctl/recording/recording.h"
#include "tools/qorextctl/trace/trace_events.h"

namespace qorextctl {

namespace {

constexpr int64_t kReplyShown = 20'000;  // nanoseconds: arrows need a slice to end in
constexpr std::string_view kBlockText = "dhob_write";

// The reader does not check the members of masked events: one of the wrong type counts as missing.
Json member(const Json& event, const char* key) {
  auto found = event.find(key);
  return found == event.end() ? Json() : *found;
}

std::string text_of(const Json& event, const char* key) {
  Json value = member(event, key);
  return value.is_string() ? value.get<std::string>() : "";
}

uint64_t number_of(const Json& event, const char* key) {
  Json value = member(event, key);
  return value.is_number_integer() ? value.get<uint64_t>() : 0;
}

int64_t time_of(const Json& event) { return static_cast<int64_t>(number_of(event, "time")); }

std::string frame_name(const Json& event) {
  std::string name = text_of(event, "name");
  return name.empty() ? text_of(event, "id") : name;
}

std::string message_name(const Json& event) {
  return text_of(event, "service") + " " + text_of(event, "name");
}

Json arguments_of(const Json& event) {
  Json arguments = Json::object();
  for (const char* key : {"id", "status_name", "fields", "problems"}) {
    if (Json value = member(event, key); !value.is_null()) arguments[key] = value;
  }
  return arguments;
}

// The thread that logged a line, and what it logged.
struct Speaker {
  std::string thread;
  bool is_main;
  std::string text;
};

std::optional<Speaker> speaker_of(const Json& event) {
  std::string line = text_of(event, "line");
  auto parsed = parse_daemon_line(line);
  if (!parsed) return std::nullopt;
  std::string_view process = parsed->source.substr(0, parsed->source.find(' '));
  if (process == parsed->source) return std::nullopt;
  std::string_view thread = parsed->source.substr(parsed->source.find_last_of(' ') + 1);
  return Speaker{std::string(thread), process == thread, std::string(parsed->text)};
}

Track thread_of(const Json& request) {
  bool saves = is_block_save_result(text_of(request, "name"), member(request, "fields"));
  return saves ? Track::hob : Track::main;
}

class Timeline {
 public:
  explicit Timeline(const std::vector<Json>& events) {
    // First, because lines of a thread can precede the one that shows that it saves the block.
    for (const Json& event : events) {
      auto speaker = speaker_of(event);
      bool saves = speaker && !speaker->is_main && speaker->text.rfind(kBlockText, 0) == 0;
      if (saves) block_threads_.insert(speaker->thread);
    }
    for (const Json& event : events) add(event);
    close_request(events.empty() ? 0 : time_of(events.back()));
    for (const auto& [key, request] : open_) {
      instant(thread_of(request), message_name(request) + " request, not answered", request);
    }
    for (const auto& [thread, span] : saves_) {
      trace_.slice(Track::hob, "save the hand-off block", span.begin, span.end);
    }
  }

  Json finish() { return trace_.finish(); }

 private:
  struct Span {
    int64_t begin;
    int64_t end;
  };
  struct Served {
    Json request = nullptr;  // null: the daemon starts up
    std::vector<Json> replies = {};
    std::optional<Span> main = {};  // the activity of the main thread
  };
  using Key = std::tuple<std::string, uint64_t, uint64_t>;  // service, client, transaction

  static Key key_of(const Json& event) {
    return {text_of(event, "service"), number_of(event, "client"), number_of(event, "transaction")};
  }

  void instant(Track track, const std::string& name, const Json& event) {
    trace_.instant(track, name, time_of(event), arguments_of(event));
  }

  void add(const Json& event) {
    std::string type = text_of(event, "type");
    if (type == kFrame) return add_frame(event);
    if (type == kMessage) return add_message(event);
    if (type == kLog) return add_log(event);
    if (type == kService) {
      const char* state = member(event, "up") == true ? " up" : " down";
      return instant(Track::modem, text_of(event, "name") + state, event);
    }
    if (type != kExit) return;
    trace_.instant(Track::main, "exit", time_of(event), {{"status", number_of(event, "status")}});
  }

  void add_frame(const Json& event) {
    std::string kind = text_of(event, "kind");
    if (kind == "request") {
      close_request(time_of(event));
      served_.request = event;
    } else if (kind == "reply" && !served_.request.is_null()) {
      served_.replies.push_back(event);
    } else {
      instant(Track::parent, kind + " " + frame_name(event), event);
    }
  }

  void add_message(const Json& event) {
    std::string direction = text_of(event, "direction");
    auto open = open_.find(key_of(event));
    if (direction == "request") {
      if (thread_of(event) == Track::main) extend_main(time_of(event));
      open_[key_of(event)] = event;
    } else if (direction == "response" && open != open_.end()) {
      add_exchange(open->second, time_of(event), member(event, "fields"));
      open_.erase(open);
    } else {
      const char* unasked = direction == "response" ? ", unasked" : "";
      instant(Track::modem, message_name(event) + " " + direction + unasked, event);
    }
  }

  void add_exchange(const Json& request, int64_t end, const Json& response) {
    Track thread = thread_of(request);
    if (thread == Track::main) extend_main(end);
    if (thread == Track::hob && !saves_.empty()) {
      Span& save = latest_save(time_of(request));
      save.end = std::max(save.end, end);
    }
    // On the thread that waits for the response, and on the modem's track.
    Json arguments = {{"request", member(request, "fields")}, {"response", response}};
    for (Track track : {thread, Track::modem}) {
      trace_.slice(track, message_name(request), time_of(request), end, arguments);
    }
  }

  void add_log(const Json& event) {
    auto speaker = speaker_of(event);
    if (!speaker) return;
    int64_t time = time_of(event);
    Track track = speaker->is_main                             ? Track::main
                  : block_threads_.count(speaker->thread) != 0 ? Track::hob
                                                               : Track::callback;
    if (track == Track::main) extend_main(time);
    if (track == Track::hob)
      saves_.try_emplace(speaker->thread, Span{time, 0}).first->second.end = time;
    instant(track, speaker->text, event);
  }

  // The save that began last at this time.
  Span& latest_save(int64_t time) {
    Span* latest = &saves_.begin()->second;
    for (auto& [thread, span] : saves_) {
      if (span.begin <= time && span.begin >= latest->begin) latest = &span;
    }
    return *latest;
  }

  void extend_main(int64_t time) {
    if (!served_.main) served_.main = Span{time, time};
    served_.main->end = time;
  }

  // `next` ends the time that the parent's track has for the request.
  void close_request(int64_t next) {
    auto [request, replies, main] = std::exchange(served_, {});
    if (request.is_null()) {
      if (main) trace_.slice(Track::main, "start-up", main->begin, main->end);
      return;
    }
    int64_t begin = time_of(request);
    std::string name = frame_name(request);
    Json arguments = arguments_of(request);
    if (replies.empty()) {
      trace_.slice(Track::parent, name + ", no reply", begin, next, arguments);
      if (main) trace_.slice(Track::main, name, main->begin, next, arguments);
      return;
    }
    // The slice that a reply gets for its arrow must not overlap the next request.
    int64_t replied = time_of(replies.back());
    int64_t shown = std::min(kReplyShown, (next - replied) / 2);
    int64_t taken = main ? std::min(main->begin, replied) : begin;
    trace_.slice(Track::parent, name, begin, replied + shown, arguments);
    trace_.slice(Track::main, name, taken, replied, arguments);
    for (const Json& reply : replies) {
      int64_t time = time_of(reply);
      std::string reply_name = frame_name(reply);
      trace_.slice(Track::parent, "reply " + reply_name, time, time + shown, arguments_of(reply));
      trace_.arrow(reply_name,
                   {{Track::parent, begin}, {Track::main, taken}, {Track::parent, time}});
    }
  }

  TraceEvents trace_;
  std::set<std::string> block_threads_;
  std::map<std::string, Span> saves_;  // by thread
  std::map<Key, Json> open_;           // requests to the modem without a response
  Served served_;
};

std::vector<Json> events_of(const Recording& recording, bool show_personal) {
  EventText text(show_personal);
  std::vector<Json> events;
  for (const Event& event : recording.events) events.push_back(text.show(event));
  return events;
}

std::optional<Error> write(const std::string& text, const std::string& path, bool is_private) {
  if (path.empty() || path == "-") {
    std::cout << text << '\n';
    return std::nullopt;
  }
  auto file = create_file("trace", path, is_private);
  if (!file) return file.error();
  if (*file << text << '\n' << std::flush) return std::nullopt;
  return Error{Outcome::broken, "trace: '" + path + "' cannot be written"};
}

}  // namespace

Json timeline(const std::vector<Json>& events) { return Timeline(events).finish(); }

Outcome write_trace(const std::string& path, const std::string& output, bool show_personal,
                    Printer& printer) {
  auto recording = read_recording(path);
  auto error = recording ? write(timeline(events_of(*recording, show_personal))
                                     .dump(-1, ' ', false, Json::error_handler_t::replace),
                                 output, show_personal)
                         : recording.error();
  if (!error) return Outcome::success;
  printer.error(*error);
  return error->outcome;
}

}  // namespace qorextctl
