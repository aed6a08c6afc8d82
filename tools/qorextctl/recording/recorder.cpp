// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/recording/recorder.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace qorextctl {

namespace {

int64_t monotonic_now() {
  return std::chrono::nanoseconds(Deadline::Clock::now().time_since_epoch()).count();
}

std::string utc_now() {
  return fmt::format(
      "{:%Y-%m-%dT%H:%M:%SZ}",
      fmt::gmtime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())));
}

}  // namespace

Recorder::Recorder(std::string path, std::ofstream file, unsigned instance, bool show_personal)
    : path_(std::move(path)), file_(std::move(file)), start_(monotonic_now()) {
  recording_ = {instance, !show_personal, utc_now()};
}

Result<std::unique_ptr<Recorder>> Recorder::create(const std::string& path, unsigned instance,
                                                   bool show_personal) {
  auto file = create_file("record", path, show_personal);
  if (!file) return file.error();
  return std::unique_ptr<Recorder>(new Recorder(path, std::move(*file), instance, show_personal));
}

std::optional<Error> Recorder::watch(const std::string& control, double timeout_seconds) {
  if (control.empty()) {
    return usage_error("record: --control PATH is missing, the modem's control socket");
  }
  timeout_seconds_ = timeout_seconds;
  auto modem = ModemControl::connect(control, timeout_seconds);
  if (!modem) return modem.error();
  modem_.emplace(std::move(*modem));
  auto answer = modem_->call({{"command", "watch"}}, Deadline::in_seconds(timeout_seconds));
  if (!answer) return answer.error();
  if (answer->value("ok", false)) return std::nullopt;
  return transport_error("the modem does not report its messages: " + answer->value("error", ""));
}

void Recorder::add(Event event) {
  std::lock_guard lock(mutex_);
  event.time = std::max(event.time, int64_t{0});
  recording_.events.push_back(std::move(event));
}

void Recorder::add_frame(FrameKind kind, View frame) {
  add({monotonic_now() - start_, FrameEvent{kind, {frame.begin(), frame.end()}}});
}

void Recorder::add_log(const std::string& line, int64_t time) {
  if (line.empty()) return;  // the log library adds a second line end to some lines
  add({time - start_, LogEvent{line}});
}

void Recorder::add_exit(const ExitStatus& status) { add({monotonic_now() - start_, status}); }

void Recorder::add_report(const Json& report) {
  auto time = [this](const Json& member) { return member.value("time", int64_t{0}) - start_; };
  if (auto message = report.find("message"); message != report.end()) {
    auto packet = parse_hex(message->value("packet", ""));
    if (!packet || !qmi_idl::load_header(*packet)) return;
    add({time(*message), MessageEvent{message->value("service", ""),
                                      message->value("client", uint64_t{0}), *packet}});
  }
  if (auto service = report.find("service"); service != report.end()) {
    add({time(*service), ServiceEvent{service->value("name", ""), service->value("up", false)}});
  }
}

// The response to a command follows all earlier reports.
void Recorder::collect() {
  if (!modem_) return;
  auto answer = modem_->call({{"command", "version"}}, Deadline::in_seconds(timeout_seconds_));
  try {
    for (const Json& report : modem_->take_reports()) add_report(report);
  } catch (const Json::exception& error) {
    answer = transport_error(fmt::format("unexpected report of the modem: {}", error.what()));
  }
  if (answer) return;
  modem_.reset();
  lost_ = transport_error("record: messages may be missing: " + answer.error().message);
}

std::optional<Error> Recorder::write() {
  std::lock_guard lock(mutex_);
  std::stable_sort(recording_.events.begin(), recording_.events.end(),
                   [](const Event& left, const Event& right) { return left.time < right.time; });
  if (write_recording(recording_, file_)) return lost_;
  return Error{Outcome::broken, fmt::format("record: '{}' cannot be written", path_)};
}

}  // namespace qorextctl
