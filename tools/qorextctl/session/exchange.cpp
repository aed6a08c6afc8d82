// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/exchange.h"

#include <fmt/format.h>
#include <poll.h>

#include <csignal>

namespace qorextctl {

namespace {

constexpr ptrdiff_t kMaxDroppedShown = 64;

std::string named_or_id(const Expected& expected) {
  return expected.request ? expected.request->name : fmt::format("0x{:X}", expected.id);
}

}  // namespace

// Processes frames until `done` returns true or `extra_fd` is readable (true), or until the daemon
// has ended, an interrupt is pending or the deadline has passed (false), even if the daemon never
// stops writing. Calls `done` at least every `max_ms`.
template <class Done>
bool Exchange::pump(Done done, int extra_fd, const Deadline* deadline, int max_ms) {
  for (bool is_late = false;; is_late = deadline && deadline->passed()) {
    print_unsolicited();
    print_late();
    if (done()) return true;
    if (over() || is_late) return false;
    drop_flood();
    pollfd entries[] = {{daemon_.replies().poll_fd(), POLLIN, 0},
                        {daemon_.unsolicited().poll_fd(), POLLIN, 0},
                        {extra_fd, POLLIN, 0},
                        {interrupt_fd_, POLLIN, 0}};
    int time = deadline ? deadline->remaining_ms() : -1;
    bool is_last = max_ms < 0 || time <= max_ms;
    int ready = poll(entries, std::size(entries), is_last ? time : max_ms);
    if (ready == 0 && is_last) return false;
    if (entries[0].revents != 0) daemon_.replies().read_available();
    interrupted_ = entries[3].revents != 0;
    if (entries[2].revents != 0) return true;
  }
}

void Exchange::print_unsolicited() {
  daemon_.unsolicited().read_available();
  while (auto frame = daemon_.unsolicited().take(unsolicited_size)) {
    notify(FrameKind::unsolicited, *frame);
    printer_.unsolicited(decode_unsolicited(*frame));
    ++unsolicited_;
  }
}

// Without an id, a late reply cannot be recognised.
void Exchange::expect_late(const Expected& expected, bool second) {
  if (expected.id == 0) return;
  late_ = expected;
  if (second) late_->replies = 1;
}

// A late reply belongs to its own request, not to the next one.
void Exchange::print_late() {
  while (late_) {
    View received = daemon_.replies().pending();
    auto size = reply_size(received, late_->form);
    if (!size || *size > received.size()) return;
    DecodedFrame late =
        decode_reply(late_->request, late_->form, late_->id, part(received, 0, *size));
    if (!late.problems.empty()) return;
    daemon_.replies().take([&](View) { return size; });
    printer_.late_reply(late);
    if (--late_->replies == 0) late_.reset();
  }
}

// More bytes than any reply has cannot be one.
void Exchange::drop_flood() {
  if (daemon_.replies().pending().size() <= kMaxFrameBytes) return;
  Bytes unexpected = daemon_.replies().take_all();
  notify(FrameKind::reply, unexpected);
  if (!dropped_) first_dropped_ = {unexpected.begin(), unexpected.begin() + kMaxDroppedShown};
  dropped_ += unexpected.size();
}

void Exchange::report_unexpected() {
  daemon_.replies().read_available();
  print_late();
  Bytes unexpected = daemon_.replies().take_all();
  if (!unexpected.empty()) notify(FrameKind::reply, unexpected);
  std::string text = printer_.unknown_bytes(unexpected);
  if (dropped_ != 0) {
    text = fmt::format("{}, and {} more", printer_.unknown_bytes(first_dropped_),
                       dropped_ - first_dropped_.size() + unexpected.size());
    dropped_ = 0;
  }
  if (text.empty()) return;
  printer_.error({Outcome::refused, "unexpected bytes in the reply pipe: " + text});
}

Outcome Exchange::run(View request, const Request* named) {
  Expected expected = expect_reply(request, named);
  report_unexpected();
  bool taken = wait_until([&] { return daemon_.wait_taken(Deadline::in_seconds(0)); },
                          Deadline::in_seconds(timeout_));
  if (!taken) {
    std::string why =
        fmt::format("the daemon has not read the previous request within {} s", timeout_);
    printer_.error(transport_error(fmt::format("{} is not sent: {}", named_or_id(expected),
                                               interrupted_ ? "interrupted" : why)));
    return Outcome::transport;
  }
  notify(FrameKind::request, request);
  Deadline deadline = Deadline::in_seconds(daemon_.send(request) ? timeout_ : 0);
  auto reply = receive(expected, false, deadline);
  if (!reply) return Outcome::transport;
  bool good = reply->problems.empty() && reply->status.value_or(0) == 0;
  if (expected.replies == 2 && reply->status != kNotSupported) {
    auto second = receive(expected, true, deadline);
    if (!second) return Outcome::transport;
    good = good && second->problems.empty();
  }
  return good ? Outcome::success : Outcome::refused;
}

std::optional<DecodedFrame> Exchange::receive(const Expected& expected, bool second,
                                              Deadline deadline) {
  std::optional<Bytes> frame;
  auto size_of = [&](View bytes) { return reply_size(bytes, expected.form); };
  auto got_frame = [&] {
    frame = daemon_.replies().take(size_of);
    return frame.has_value();
  };
  if (!pump(got_frame, -1, &deadline)) {
    report_no_reply(expected, second);
    expect_late(expected, second);
    return std::nullopt;
  }
  notify(FrameKind::reply, *frame);
  DecodedFrame reply = decode_reply(expected.request, expected.form, expected.id, *frame);
  printer_.reply(reply, second);
  return reply;
}

void Exchange::report_no_reply(const Expected& expected, bool second) {
  Bytes rest = daemon_.replies().take_all();
  if (!rest.empty()) notify(FrameKind::reply, rest);
  std::string got =
      rest.empty() ? "" : fmt::format(", received only a part: {}", printer_.unknown_bytes(rest));
  std::string which =
      fmt::format("no {}reply to {}", second ? "second " : "", named_or_id(expected));
  std::string why =
      interrupted_ ? " before the interruption" : fmt::format(" within {} s", timeout_);
  std::string advice = interrupted_ ? "" : "; --log shows why, a longer --timeout waits longer";
  if (daemon_.replies().ended()) {
    advice.clear();
    auto status = daemon_.wait_exit(Deadline::in_seconds(timeout_));
    why = ": the daemon " + (status ? "ended with " + describe(*status) : "closed its reply pipe");
  }
  printer_.error(transport_error(which + why + got + advice));
}

Outcome Exchange::wait_unsolicited(size_t count, double seconds) {
  Deadline deadline = Deadline::in_seconds(seconds);
  bool came = pump([&] { return unsolicited_ >= count; }, -1, &deadline);
  if (!came) {
    printer_.error(transport_error(
        fmt::format("{} of {} unsolicited frames came within {} s", unsolicited_, count, seconds)));
  }
  unsolicited_ -= std::min(unsolicited_, count);
  return came ? Outcome::success : Outcome::transport;
}

bool Exchange::wait_until(const std::function<bool()>& done, Deadline deadline) {
  constexpr int kPauseMs = 5;
  return pump(done, -1, &deadline, kPauseMs);
}

void Exchange::wait_readable(int fd) {
  pump([] { return false; }, fd, nullptr);
}

Outcome Exchange::finish(bool print_exit) {
  daemon_.close_requests();
  auto status = daemon_.wait_exit(Deadline::in_seconds(timeout_));
  print_unsolicited();
  report_unexpected();
  if (!status) {
    printer_.error(transport_error(
        fmt::format("the daemon still runs {} s after the end of its requests", timeout_)));
    daemon_.process().signal(SIGTERM);  // ends a later wait for its log too
    return Outcome::transport;
  }
  if (print_exit) printer_.daemon_exit(*status);
  if (interrupted_) {
    printer_.error(transport_error("interrupted"));
    return Outcome::transport;
  }
  bool good = status->signal == 0 && status->code == 0;
  if (!good && !print_exit) {
    printer_.error(transport_error("the daemon ended with " + describe(*status)));
  }
  return good ? Outcome::success : Outcome::transport;
}

}  // namespace qorextctl
