#include "replay.h"

#include <fmt/format.h>
#include <poll.h>

#include <climits>

#include "interrupts.h"
#include "launch.h"
#include "packet.h"
#include "phone_files.h"
#include "replay_modem.h"
#include "replay_report.h"
#include "replay_script.h"

namespace qorextctl {

namespace {

constexpr int kPauseMs = 1;  // between two looks at the request pipe
constexpr uint16_t kRefused = 1;
constexpr uint16_t kNotSupportedError = 94;

class Replay {
 public:
  Replay(const Recording& recording, const Options& options, Printer& printer)
      : options_(options),
        printer_(printer),
        script_(recording),
        report_(printer, options.show_personal) {}

  std::optional<Error> start();
  void run();
  Outcome finish();

 private:
  void play(const FrameEvent& frame, const Event& event);
  void play(const MessageEvent& message, const Event& event);
  void play(const ServiceEvent& service, const Event& event);
  void play(const LogEvent& log, const Event& event);
  void play(const ExitStatus& status, const Event& event);
  void send(const FrameEvent& frame, const Event& event);
  void expect(FramePipe& pipe, const FrameEvent& frame, const Event& event);
  void expect_message(size_t index, const Event& event);
  void answer(size_t request, size_t response);
  void answer_at_once(size_t request);
  void take_request();
  void take_unexpected();
  void take_unexpected_reply();
  bool has_answered() const { return !daemon_->replies().pending().empty(); }
  bool has_closed() { return daemon_->replies().ended() && daemon_->unsolicited().ended(); }
  template <class Done>
  bool wait(Done done, int most_ms = INT_MAX);
  template <class Decoded>
  void lacks(const Event& event, const std::string& what, const Decoded& expected);
  void note_activity() { quiet_ = Deadline::in_seconds(options_.timeout); }

  struct Live {
    uint64_t client;
    uint16_t transaction;
  };

  const Options& options_;
  Printer& printer_;
  ReplayScript script_;
  ReplayReport report_;
  Interrupts interrupts_;
  std::unique_ptr<Setup> setup_;
  std::unique_ptr<ReplayModem> modem_;
  std::unique_ptr<Daemon> daemon_;
  Conversation conversation_;
  std::map<size_t, Live> live_;  // requests that have come, by event
  std::set<size_t> answered_;    // responses that are sent, by event
  Deadline quiet_ = Deadline::in_seconds(0);
  size_t index_ = 0;
  bool interrupted_ = false;
  bool over_ = false;  // the daemon has ended before its time
};

std::optional<Error> Replay::start() {
  SetupOptions given = options_.setup;
  given.serves_modem = true;
  auto setup = Setup::create(given, interrupts_.fd());
  if (!setup) return setup.error();
  setup_ = std::move(*setup);
  auto modem = ReplayModem::serve(setup_->modem_socket());
  if (!modem) return modem.error();
  modem_ = std::move(*modem);
  give_to_radio_user(setup_->modem_socket());
  LogCapture::Listener on_log;
  if (options_.log) on_log = [this](const std::string& line) { printer_.log_line(line); };
  auto daemon = launch_daemon(options_, *setup_, on_log);
  if (!daemon) return daemon.error();
  daemon_ = std::move(*daemon);
  note_activity();
  return std::nullopt;
}

// Until `done` says so (true), or until nothing has happened for the time-out, the daemon has ended
// or the user wants an end. `done` is asked whenever something happens, and every `most_ms`.
template <class Done>
bool Replay::wait(Done done, int most_ms) {
  for (;;) {
    if (done()) return true;
    if (interrupted_ || has_closed()) return false;
    auto open_fd = [](const FramePipe& pipe) { return pipe.ended() ? -1 : pipe.fd(); };
    pollfd entries[] = {{modem_->fd(), POLLIN, 0},
                        {open_fd(daemon_->replies()), POLLIN, 0},
                        {open_fd(daemon_->unsolicited()), POLLIN, 0},
                        {interrupts_.fd(), POLLIN, 0}};
    int left = quiet_.remaining_ms();
    int ready = poll(entries, std::size(entries), std::min(left, most_ms));
    if (ready == 0 && left == 0) return false;
    if (ready <= 0) continue;
    note_activity();
    if (entries[0].revents != 0) take_request();
    if (entries[1].revents != 0) daemon_->replies().read_available();
    if (entries[2].revents != 0) daemon_->unsolicited().read_available();
    interrupted_ = entries[3].revents != 0;
  }
}

// Of a daemon that has ended everything is missing: that is told once.
template <class Decoded>
void Replay::lacks(const Event& event, const std::string& what, const Decoded& expected) {
  if (!has_closed()) return report_.missing(event.line, what, expected);
  auto status = daemon_->wait_exit(Deadline::in_seconds(options_.timeout));
  report_.add(event.line, what,
              {"daemon", "runs", status ? describe(*status) : "closed its pipes"});
  over_ = true;
}

void Replay::take_request() {
  auto request = modem_->next();
  if (!request) return;
  const QmiMessage& got = request->message;
  auto event = script_.match(got);
  if (!event) {
    report_.unexpected(title_of(got), got);
    modem_->send(request->client,
                 modem::result_packet(got.header.transaction, got.header.message_id, kRefused,
                                      kNotSupportedError));
    return;
  }
  report_.compared(script_.events()[*event].line, title_of(got), *script_.message(*event), got);
  live_[*event] = {request->client, got.header.transaction};
  if (script_.is_early(*event)) answer_at_once(*event);
}

// What comes before its time may be what the script's next event waits for.
void Replay::answer_at_once(size_t request) {
  for (size_t i = request; i < script_.events().size(); ++i) {
    if (script_.request_of(i) == request) answer(request, i);
  }
}

void Replay::answer(size_t request, size_t response) {
  auto live = live_.find(request);
  if (live == live_.end() || !answered_.insert(response).second) return;
  modem_->send(live->second.client, script_.answer(response, live->second.transaction));
}

void Replay::send(const FrameEvent& frame, const Event& event) {
  take_unexpected_reply();
  DecodedFrame request = conversation_.decode(frame.kind, frame.bytes);
  auto has_taken = [this] { return daemon_->wait_taken(Deadline::in_seconds(0)); };
  bool is_taken = wait(has_taken, kPauseMs);
  if (!is_taken || !daemon_->send(frame.bytes)) {
    report_.add(event.line, "request " + request.name, {"sent", true, false});
  }
  note_activity();
}

void Replay::expect(FramePipe& pipe, const FrameEvent& frame, const Event& event) {
  bool is_reply = frame.kind == FrameKind::reply;
  DecodedFrame expected = conversation_.decode(frame.kind, frame.bytes);
  std::string what = fmt::format("{} {}", name_of(frame.kind), expected.name);
  std::optional<Bytes> got;
  auto size_of = [&](View bytes) {
    if (!is_reply || !conversation_.expected()) return unsolicited_size(bytes);
    return reply_size(bytes, conversation_.expected()->form);
  };
  if (!wait([&] { return (got = pipe.take(size_of)).has_value(); })) {
    return lacks(event, what, expected);
  }
  report_.compared(event.line, what, expected, conversation_.decode(frame.kind, *got));
}

void Replay::play(const FrameEvent& frame, const Event& event) {
  if (frame.kind == FrameKind::request) return send(frame, event);
  bool is_reply = frame.kind == FrameKind::reply;
  expect(is_reply ? daemon_->replies() : daemon_->unsolicited(), frame, event);
}

// A request of the main thread does not come any more when the reply has come that it is for.
void Replay::expect_message(size_t index, const Event& event) {
  const QmiMessage& expected = *script_.message(index);
  bool is_main = !tells_of_block_save(expected.name, expected.fields);
  wait([&] { return script_.is_matched(index) || (is_main && has_answered()); });
  if (!script_.is_matched(index)) lacks(event, title_of(expected), expected);
}

void Replay::play(const MessageEvent& told, const Event& event) {
  switch (script_.message(index_)->header.type) {
    case qmi_idl::WireType::request:
      return expect_message(index_, event);
    case qmi_idl::WireType::response:
      if (auto request = script_.request_of(index_)) answer(*request, index_);
      return;
    case qmi_idl::WireType::indication:
      return modem_->send_to_all(told.service, told.packet);
  }
}

void Replay::play(const ServiceEvent& service, const Event& /*event*/) {
  modem_->move_service(service.name, service.is_up);
}

void Replay::play(const LogEvent& /*log*/, const Event& /*event*/) {}

void Replay::play(const ExitStatus& status, const Event& event) {
  take_unexpected();
  auto ended = daemon_->wait_exit(Deadline::in_seconds(options_.timeout));
  std::string got = ended ? describe(*ended) : "none";
  if (got != describe(status)) {
    report_.add(event.line, "exit", {"status", describe(status), got});
  }
}

void Replay::run() {
  size_t count = script_.events().size();
  for (index_ = 0; index_ < count && !interrupted_ && !over_; ++index_) {
    script_.reach(index_);
    const Event& event = script_.events()[index_];
    std::visit([&](const auto& what) { play(what, event); }, event.what);
  }
  take_unexpected();
}

void Replay::take_unexpected_reply() {
  Bytes rest = daemon_->replies().take_all();
  if (rest.empty()) return;
  DecodedFrame reply = conversation_.decode(FrameKind::reply, rest);
  report_.unexpected("reply " + reply.name, reply);
}

// Ends the daemon: what it sends until then nobody expects.
void Replay::take_unexpected() {
  daemon_->close_requests();
  note_activity();
  wait([] { return false; });
  take_unexpected_reply();
  while (auto frame = daemon_->unsolicited().take(unsolicited_size)) {
    DecodedFrame message = conversation_.decode(FrameKind::unsolicited, *frame);
    report_.unexpected("unsolicited " + message.name, message);
  }
}

Outcome Replay::finish() {
  report_.summary(options_.words[0]);
  if (interrupted_) {
    printer_.error(transport_error("interrupted"));
    return Outcome::transport;
  }
  return report_.is_same() ? Outcome::success : Outcome::refused;
}

std::optional<Error> what_hinders(const Options& options, const Recording& recording) {
  if (!options.setup.modem.empty()) {
    return usage_error("replay: --modem is not for replays, the recording is the modem");
  }
  const Event* masked = first_masked(recording);
  if (!masked) return std::nullopt;
  return usage_error(fmt::format(
      "{}: line {}: personal data is masked; record with --show-personal what is to be replayed",
      options.words[0], masked->line));
}

}  // namespace

Outcome replay(const Options& options, Printer& printer) {
  auto recording = read_recording(options.words[0]);
  auto error = recording ? what_hinders(options, *recording) : recording.error();
  if (error) {
    printer.error(*error);
    return error->outcome;
  }
  Options own = options;
  own.instance = recording->instance;
  Replay player(*recording, own, printer);
  if (auto hindrance = player.start()) {
    printer.error(*hindrance);
    return hindrance->outcome;
  }
  player.run();
  return player.finish();
}

}  // namespace qorextctl
