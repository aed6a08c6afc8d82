// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/trace/timeline.h"

#include <fmt/format.h>

#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "tools/qorextctl/recording/qmi_message.h"
#include "tools/qorextctl/recording/recording_format.h"
#include "tools/qorextctl/trace/shown_event.h"
#include "tools/qorextctl/trace/trace_tracks.h"

namespace qorextctl {

namespace {

constexpr int64_t kReplyShown = 20'000;  // nanoseconds: arrows need a slice to end in
constexpr std::string_view kBlockText = "dhob_write";

class Timeline {
 public:
  explicit Timeline(const std::vector<Json>& events) : events_(events) {
    for (const Json& event : events_) note_block_thread(event);
  }

  Json build() {
    for (const Json& event : events_) add(event);
    close_request(end_time());
    close_start_up();
    for (const auto& [key, request] : asked_) add_unanswered(request);
    for (const auto& [thread, span] : saves_) {
      tracks_.slice(Track::hob, "save the hand-off block", span.begin, span.end, Json::object());
    }
    return tracks_.finish();
  }

 private:
  struct Span {
    int64_t begin;
    int64_t end;
  };
  struct Served {
    Json request;
    std::vector<Json> replies = {};
    std::optional<Span> main = {};  // what was seen of the main thread meanwhile
  };
  using Key = std::tuple<std::string, uint64_t, uint64_t>;  // service, client, transaction

  int64_t end_time() const { return events_.empty() ? 0 : time_of(events_.back()); }

  void note_block_thread(const Json& event) {
    auto speaker = speaker_of(event);
    bool saves = speaker && !speaker->is_main && speaker->text.rfind(kBlockText, 0) == 0;
    if (saves) block_threads_.insert(speaker->thread);
  }

  void add(const Json& event) {
    std::string type = text_of(event, "type");
    if (type == kFrame) add_frame(event);
    if (type == kMessage) add_message(event);
    if (type == kLog) add_log(event);
    if (type == kService) {
      const Json* up = member(event, "up");
      const char* way = up && *up == true ? "up" : "down";
      tracks_.instant(Track::modem, fmt::format("{} {}", text_of(event, "name"), way),
                      time_of(event), Json::object());
    }
    if (type == kExit) {
      tracks_.instant(Track::main, "exit", time_of(event),
                      {{"status", number_of(event, "status")}});
    }
  }

  void add_frame(const Json& event) {
    std::string kind = text_of(event, "kind");
    if (kind == "request") {
      close_request(time_of(event));
      close_start_up();
      served_ = Served{event};
    } else if (kind == "reply" && served_) {
      served_->replies.push_back(event);
    } else {
      tracks_.instant(Track::parent, kind + " " + name_of(event), time_of(event),
                      arguments_of(event));
    }
  }

  void add_message(const Json& event) {
    std::string direction = text_of(event, "direction");
    if (direction == "request") return add_question(event);
    if (direction == "response") return add_answer(event);
    tracks_.instant(Track::modem, title_of(event), time_of(event), arguments_of(event));
  }

  void add_question(const Json& event) {
    if (thread_of(event) == Track::main) see_main(time_of(event));
    asked_[key_of(event)] = event;
  }

  void add_answer(const Json& event) {
    auto asked = asked_.find(key_of(event));
    if (asked == asked_.end()) {
      return tracks_.instant(Track::modem, title_of(event) + ", unasked", time_of(event),
                             arguments_of(event));
    }
    add_exchange(asked->second, time_of(event), fields_of(event));
    asked_.erase(asked);
  }

  void add_exchange(const Json& request, int64_t end, const Json& answer) {
    Track thread = thread_of(request);
    if (thread == Track::main) see_main(end);
    if (thread == Track::hob && !saves_.empty()) {
      Span& save = last_save(time_of(request));
      save.end = std::max(save.end, end);
    }
    std::string name = text_of(request, "service") + " " + text_of(request, "name");
    Json arguments = {{"request", fields_of(request)}, {"response", answer}};
    for (Track track : {thread, Track::modem}) {
      tracks_.slice(track, name, time_of(request), end, arguments);
    }
  }

  void add_unanswered(const Json& request) {
    tracks_.instant(thread_of(request), title_of(request) + ", not answered", time_of(request),
                    arguments_of(request));
  }

  void add_log(const Json& event) {
    auto speaker = speaker_of(event);
    if (!speaker) return;
    int64_t time = time_of(event);
    Track track = speaker->is_main                             ? Track::main
                  : block_threads_.count(speaker->thread) != 0 ? Track::hob
                                                               : Track::callback;
    if (track == Track::main) see_main(time);
    if (track == Track::hob) {
      Span& save = saves_.try_emplace(speaker->thread, Span{time, time}).first->second;
      save.end = time;
    }
    tracks_.instant(track, speaker->text, time, Json::object());
  }

  // The save that had begun last at this time.
  Span& last_save(int64_t time) {
    Span* last = &saves_.begin()->second;
    for (auto& [thread, span] : saves_) {
      if (span.begin <= time && span.begin >= last->begin) last = &span;
    }
    return *last;
  }

  void see_main(int64_t time) {
    std::optional<Span>& seen = served_ ? served_->main : start_up_;
    if (!seen) seen = Span{time, time};
    seen->end = time;
  }

  void close_start_up() {
    if (start_up_) {
      tracks_.slice(Track::main, "start-up", start_up_->begin, start_up_->end, Json::object());
    }
    start_up_.reset();
  }

  // `next` is when the parent's time for this one ends.
  void close_request(int64_t next) {
    if (!served_) return;
    Served served = *std::exchange(served_, std::nullopt);
    int64_t begin = time_of(served.request);
    std::string name = name_of(served.request);
    Json arguments = arguments_of(served.request);
    if (served.replies.empty()) {
      tracks_.slice(Track::parent, name + ", no reply", begin, next, arguments);
      if (served.main) tracks_.slice(Track::main, name, served.main->begin, next, arguments);
      return;
    }
    int64_t replied = time_of(served.replies.back());
    int64_t shown = std::min(kReplyShown, (next - replied) / 2);
    tracks_.slice(Track::parent, name, begin, replied + shown, arguments);
    int64_t taken = served.main ? std::min(served.main->begin, replied) : begin;
    tracks_.slice(Track::main, name, taken, replied, arguments);
    for (const Json& reply : served.replies) add_reply(reply, begin, taken, shown);
  }

  void add_reply(const Json& reply, int64_t begin, int64_t taken, int64_t shown) {
    int64_t time = time_of(reply);
    tracks_.slice(Track::parent, "reply " + name_of(reply), time, time + shown,
                  arguments_of(reply));
    tracks_.arrow(name_of(reply),
                  {{Track::parent, begin}, {Track::main, taken}, {Track::parent, time}});
  }

  static Key key_of(const Json& event) {
    return {text_of(event, "service"), number_of(event, "client"), number_of(event, "transaction")};
  }
  static Track thread_of(const Json& request) {
    bool saves = tells_of_block_save(text_of(request, "name"), fields_of(request));
    return saves ? Track::hob : Track::main;
  }

  const std::vector<Json>& events_;
  TraceTracks tracks_;
  std::set<std::string> block_threads_;
  std::map<std::string, Span> saves_;  // by thread
  std::map<Key, Json> asked_;          // requests to the modem
  std::optional<Served> served_;
  std::optional<Span> start_up_;
};

}  // namespace

Json timeline(const std::vector<Json>& events) { return Timeline(events).build(); }

}  // namespace qorextctl
