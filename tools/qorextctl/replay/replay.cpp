// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay.h"

#include <fmt/format.h>

#include <map>
#include <set>

#include "modem/messages/packet.h"
#include "tools/qorextctl/replay/compare.h"
#include "tools/qorextctl/replay/replay_script.h"
#include "tools/qorextctl/replay/replay_stage.h"

namespace qorextctl {

namespace {

constexpr int kPollMs = 1;  // interval of checks of the request pipe
constexpr std::chrono::milliseconds kSettleTime{100};
constexpr uint16_t kRefused = 1;
constexpr uint16_t kNotSupportedError = 94;

// Plays a script event by event: sends the parent's requests and the modem's messages, and expects
// the recorded frames and messages of the daemon.
class Player {
 public:
  Player(const Recording& recording, bool show_personal, Printer& printer)
      : printer_(printer), script_(recording), report_(printer, show_personal) {}

  std::optional<Error> start(const LaunchOptions& options) {
    auto serve_request = [this](const ReplayModem::Request& request) { serve(request); };
    auto stage = ReplayStage::start(options, printer_, serve_request);
    if (!stage) return stage.error();
    stage_ = std::move(*stage);
    return std::nullopt;
  }

  void run() {
    size_t count = script_.events().size();
    for (index_ = 0; index_ < count && !stage_->is_interrupted() && !over_; ++index_) {
      script_.reach(index_);
      const Event& event = script_.events()[index_];
      std::visit([&](const auto& what) { play(what, event); }, event.what);
    }
    end_daemon();
  }

  Outcome finish(const std::string& path) {
    report_.summary(path);
    if (stage_->is_interrupted()) {
      printer_.error(transport_error("interrupted"));
      return Outcome::transport;
    }
    return report_.is_same() ? Outcome::success : Outcome::refused;
  }

 private:
  struct Sender {
    uint64_t client;
    uint16_t transaction;
  };

  Daemon& daemon() { return stage_->daemon(); }
  bool has_replied() { return !daemon().replies().pending().empty(); }

  // Everything is missing after the daemon's end: that is reported once.
  template <class Decoded>
  void report_missing(const Event& event, const std::string& what, const Decoded& expected) {
    if (!stage_->has_ended()) return report_.missing(event.line, what, expected);
    report_.add(event.line, what, {"daemon", "runs", stage_->end()});
    over_ = true;
  }

  void serve(const ReplayModem::Request& request) {
    const QmiMessage& got = request.message;
    auto event = script_.match(got);
    if (!event) {
      report_.unexpected(title_of(got), got);
      const auto& [type, transaction, id, length] = got.header;
      return stage_->modem().send(
          request.client, modem::result_packet(transaction, id, kRefused, kNotSupportedError));
    }
    report_.compared(script_.events()[*event].line, title_of(got), *script_.message(*event), got);
    senders_[*event] = {request.client, got.header.transaction};
    if (script_.is_early(*event)) answer_at_once(*event);
  }

  // The script's next event may depend on a request that comes early.
  void answer_at_once(size_t request) {
    for (size_t i = request; i < script_.events().size(); ++i) {
      if (script_.request_of(i) == request) answer(request, i);
    }
  }

  void answer(size_t request, size_t response) {
    auto sender = senders_.find(request);
    if (sender == senders_.end() || !answered_.insert(response).second) return;
    stage_->modem().send(sender->second.client,
                         script_.answer(response, sender->second.transaction));
  }

  void send(const FrameEvent& frame, const Event& event) {
    report_unexpected_reply();
    DecodedFrame request = frames_.read(frame.kind, frame.bytes);
    auto has_taken = [this] { return daemon().wait_taken(Deadline::in_seconds(0)); };
    bool is_taken = stage_->wait(has_taken, kPollMs);
    if (!is_taken || !daemon().send(frame.bytes)) {
      report_.add(event.line, "request " + request.name, {"sent", true, false});
    }
    stage_->note_activity();
  }

  void play(const FrameEvent& frame, const Event& event) {
    if (frame.kind == FrameKind::request) return send(frame, event);
    bool is_reply = frame.kind == FrameKind::reply;
    FramePipe& pipe = is_reply ? daemon().replies() : daemon().unsolicited();
    DecodedFrame expected = frames_.read(frame.kind, frame.bytes);
    std::string what = fmt::format("{} {}", name_of(frame.kind), expected.name);
    auto size_of = [&](View bytes) {
      if (!is_reply || !frames_.expected()) return unsolicited_size(bytes);
      return reply_size(bytes, frames_.expected()->form);
    };
    std::optional<Bytes> got;
    if (!stage_->wait([&] { return (got = pipe.take(size_of)).has_value(); })) {
      return report_missing(event, what, expected);
    }
    report_.compared(event.line, what, expected, frames_.read(frame.kind, *got));
  }

  // The main thread sends no more messages for a request after its reply.
  void expect_message(const Event& event) {
    const QmiMessage& expected = *script_.message(index_);
    bool is_main = !is_block_save_result(expected.name, expected.fields);
    stage_->wait([&] { return script_.is_matched(index_) || (is_main && has_replied()); });
    if (!script_.is_matched(index_)) report_missing(event, title_of(expected), expected);
  }

  void play(const MessageEvent& message, const Event& event) {
    switch (script_.message(index_)->header.type) {
      case qmi_idl::WireType::request:
        return expect_message(event);
      case qmi_idl::WireType::response:
        if (auto request = script_.request_of(index_)) answer(*request, index_);
        return;
      case qmi_idl::WireType::indication:
        return stage_->modem().send_to_all(message.service, message.packet);
    }
  }

  void play(const ServiceEvent& service, const Event& /*event*/) {
    stage_->modem().move_service(service.name, service.is_up);
  }

  void play(const LogEvent& /*log*/, const Event& /*event*/) {}

  void play(const ExitStatus& status, const Event& event) {
    end_daemon();
    std::string got = stage_->end();
    if (got != describe(status)) report_.add(event.line, "exit", {"status", describe(status), got});
  }

  void report_unexpected_reply() {
    Bytes rest = daemon().replies().take_all();
    if (rest.empty()) return;
    DecodedFrame reply = frames_.read(FrameKind::reply, rest);
    report_.unexpected("reply " + reply.name, reply);
  }

  // Reports all frames up to the daemon's end as unexpected. The daemon drops everything when its
  // requests end, so the last indications get some time first.
  void end_daemon() {
    stage_->note_activity();
    Deadline settled = Deadline::in(kSettleTime);
    stage_->wait([&] { return settled.passed(); }, kPollMs);
    daemon().close_requests();
    stage_->wait([] { return false; });
    report_unexpected_reply();
    while (auto frame = daemon().unsolicited().take(unsolicited_size)) {
      DecodedFrame message = frames_.read(FrameKind::unsolicited, *frame);
      report_.unexpected("unsolicited " + message.name, message);
    }
  }

  Printer& printer_;
  ReplayScript script_;
  ReplayReport report_;
  std::unique_ptr<ReplayStage> stage_;
  FrameReader frames_;
  std::map<size_t, Sender> senders_;  // of received requests, by event
  std::set<size_t> answered_;         // sent responses, by event
  size_t index_ = 0;
  bool over_ = false;  // the daemon has ended too early
};

std::optional<Error> check(const std::string& path, const LaunchOptions& options,
                           const Recording& recording) {
  if (!options.setup.modem.empty()) {
    return usage_error("replay: --modem is not allowed, the recording is the modem");
  }
  const Event* masked = first_masked(recording);
  if (!masked) return std::nullopt;
  return usage_error(
      fmt::format("{}: line {}: personal data is masked; record with --show-personal to replay",
                  path, masked->line));
}

}  // namespace

Outcome replay(const std::string& path, const LaunchOptions& options, bool show_personal,
               Printer& printer) {
  auto fail = [&printer](const Error& error) {
    printer.error(error);
    return error.outcome;
  };
  auto recording = read_recording(path);
  if (!recording) return fail(recording.error());
  if (auto error = check(path, options, *recording)) return fail(*error);
  LaunchOptions own = options;
  own.instance = recording->instance;
  Player player(*recording, show_personal, printer);
  if (auto error = player.start(own)) return fail(*error);
  player.run();
  return player.finish(path);
}

}  // namespace qorextctl
