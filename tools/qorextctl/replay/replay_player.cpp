// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay_player.h"

#include <fmt/format.h>

#include "modem/messages/packet.h"

namespace qorextctl {

namespace {

constexpr int kPauseMs = 1;  // between two looks at the request pipe
constexpr std::chrono::milliseconds kSettleTime{100};
constexpr uint16_t kRefused = 1;
constexpr uint16_t kNotSupportedError = 94;

}  // namespace

std::optional<Error> ReplayPlayer::start(const LaunchOptions& options) {
  auto serve_request = [this](const ReplayModem::Request& request) { serve(request); };
  auto stage = ReplayStage::start(options, printer_, serve_request);
  if (!stage) return stage.error();
  stage_ = std::move(*stage);
  return std::nullopt;
}

// Of a daemon that has ended everything is missing: that is told once.
template <class Decoded>
void ReplayPlayer::lacks(const Event& event, const std::string& what, const Decoded& expected) {
  if (!stage_->has_ended()) return report_.missing(event.line, what, expected);
  report_.add(event.line, what, {"daemon", "runs", stage_->end()});
  over_ = true;
}

void ReplayPlayer::serve(const ReplayModem::Request& request) {
  const QmiMessage& got = request.message;
  auto event = script_.match(got);
  if (!event) {
    report_.unexpected(title_of(got), got);
    const auto& [type, transaction, id, length] = got.header;
    return stage_->modem().send(
        request.client, modem::result_packet(transaction, id, kRefused, kNotSupportedError));
  }
  report_.compared(script_.events()[*event].line, title_of(got), *script_.message(*event), got);
  live_[*event] = {request.client, got.header.transaction};
  if (script_.is_early(*event)) answer_at_once(*event);
}

// What comes before its time may be what the script's next event waits for.
void ReplayPlayer::answer_at_once(size_t request) {
  for (size_t i = request; i < script_.events().size(); ++i) {
    if (script_.request_of(i) == request) answer(request, i);
  }
}

void ReplayPlayer::answer(size_t request, size_t response) {
  auto live = live_.find(request);
  if (live == live_.end() || !answered_.insert(response).second) return;
  stage_->modem().send(live->second.client, script_.answer(response, live->second.transaction));
}

void ReplayPlayer::send(const FrameEvent& frame, const Event& event) {
  take_unexpected_reply();
  DecodedFrame request = conversation_.decode(frame.kind, frame.bytes);
  auto has_taken = [this] { return daemon().wait_taken(Deadline::in_seconds(0)); };
  bool is_taken = stage_->wait(has_taken, kPauseMs);
  if (!is_taken || !daemon().send(frame.bytes)) {
    report_.add(event.line, "request " + request.name, {"sent", true, false});
  }
  stage_->note_activity();
}

void ReplayPlayer::expect(FramePipe& pipe, const FrameEvent& frame, const Event& event) {
  bool is_reply = frame.kind == FrameKind::reply;
  DecodedFrame expected = conversation_.decode(frame.kind, frame.bytes);
  std::string what = fmt::format("{} {}", name_of(frame.kind), expected.name);
  std::optional<Bytes> got;
  auto size_of = [&](View bytes) {
    if (!is_reply || !conversation_.expected()) return unsolicited_size(bytes);
    return reply_size(bytes, conversation_.expected()->form);
  };
  if (!stage_->wait([&] { return (got = pipe.take(size_of)).has_value(); })) {
    return lacks(event, what, expected);
  }
  report_.compared(event.line, what, expected, conversation_.decode(frame.kind, *got));
}

void ReplayPlayer::play(const FrameEvent& frame, const Event& event) {
  if (frame.kind == FrameKind::request) return send(frame, event);
  bool is_reply = frame.kind == FrameKind::reply;
  expect(is_reply ? daemon().replies() : daemon().unsolicited(), frame, event);
}

// A request of the main thread does not come any more when the reply has come that it is for.
void ReplayPlayer::expect_message(const Event& event) {
  const QmiMessage& expected = *script_.message(index_);
  bool is_main = !tells_of_block_save(expected.name, expected.fields);
  stage_->wait([&] { return script_.is_matched(index_) || (is_main && has_answered()); });
  if (!script_.is_matched(index_)) lacks(event, title_of(expected), expected);
}

void ReplayPlayer::play(const MessageEvent& told, const Event& event) {
  switch (script_.message(index_)->header.type) {
    case qmi_idl::WireType::request:
      return expect_message(event);
    case qmi_idl::WireType::response:
      if (auto request = script_.request_of(index_)) answer(*request, index_);
      return;
    case qmi_idl::WireType::indication:
      return stage_->modem().send_to_all(told.service, told.packet);
  }
}

void ReplayPlayer::play(const ServiceEvent& service, const Event& /*event*/) {
  stage_->modem().move_service(service.name, service.is_up);
}

void ReplayPlayer::play(const LogEvent& /*log*/, const Event& /*event*/) {}

void ReplayPlayer::play(const ExitStatus& status, const Event& event) {
  end_daemon();
  std::string got = stage_->end();
  if (got != describe(status)) report_.add(event.line, "exit", {"status", describe(status), got});
}

void ReplayPlayer::run() {
  size_t count = script_.events().size();
  for (index_ = 0; index_ < count && !stage_->is_interrupted() && !over_; ++index_) {
    script_.reach(index_);
    const Event& event = script_.events()[index_];
    std::visit([&](const auto& what) { play(what, event); }, event.what);
  }
  end_daemon();
}

void ReplayPlayer::take_unexpected_reply() {
  Bytes rest = daemon().replies().take_all();
  if (rest.empty()) return;
  DecodedFrame reply = conversation_.decode(FrameKind::reply, rest);
  report_.unexpected("reply " + reply.name, reply);
}

// Ends the daemon: what it sends until then nobody expects. At the end of its requests it leaves
// everything else undone, so that it needs some time for indications that came last.
void ReplayPlayer::end_daemon() {
  stage_->note_activity();
  Deadline settled = Deadline::in(kSettleTime);
  stage_->wait([&] { return settled.passed(); }, kPauseMs);
  daemon().close_requests();
  stage_->wait([] { return false; });
  take_unexpected_reply();
  while (auto frame = daemon().unsolicited().take(unsolicited_size)) {
    DecodedFrame message = conversation_.decode(FrameKind::unsolicited, *frame);
    report_.unexpected("unsolicited " + message.name, message);
  }
}

Outcome ReplayPlayer::finish(const std::string& path) {
  report_.summary(path);
  if (stage_->is_interrupted()) {
    printer_.error(transport_error("interrupted"));
    return Outcome::transport;
  }
  return report_.is_same() ? Outcome::success : Outcome::refused;
}

}  // namespace qorextctl
