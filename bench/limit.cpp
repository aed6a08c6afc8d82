// SPDX-License-Identifier: Apache-2.0
// The limit: the cost of the daemon's requests when nothing but their system and log calls is done.
// Starts like the daemon and plays a plan recorded from it: for each request the same select and
// read, the same packets to the modem (each one send and one blocking receive), the same log lines
// (by the same log call, with ready texts) and the same write of the same reply, in the daemon's
// order. No dispatch, no encoding, no formatting, no second thread.
//
// $QOREXT_BENCH_PLAN names the plan: a text with one step a line, bytes in hexadecimal:
//
//   request BYTES            begins a request; its steps follow in order
//   log LINE                 a log line as the log library writes it to a terminal, as bytes
//   exchange SERVICE BYTES   a request packet to a service of the modem, and its response
//   reply BYTES
#include <android/log.h>
#include <sys/select.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "bench/raw_channel.h"
#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/log/log_line.h"

namespace {

using qorextctl::Bytes;

constexpr size_t kRequestSize = 17408;
constexpr uint32_t kServices[] = {2, 3, 0xE7};

struct Step {
  enum class Kind { log, exchange, reply } kind;
  uint32_t number;  // the log line's priority, the exchange's service
  Bytes bytes;
};

struct PlannedRequest {
  Bytes request;
  std::vector<Step> steps;
};

Bytes read_bytes(std::istream& words) {
  std::string digits;
  words >> digits;
  auto bytes = qorextctl::parse_hex(digits);
  if (!bytes || bytes->empty()) throw std::runtime_error("a step without bytes");
  return *bytes;
}

uint32_t priority_of(char letter) {
  constexpr std::string_view kLetters = "VDIWEFS";
  return static_cast<uint32_t>(kLetters.find(letter)) + ANDROID_LOG_VERBOSE;
}

Step read_log_step(std::istream& words) {
  Bytes bytes = read_bytes(words);
  auto line =
      qorextctl::parse_daemon_line({reinterpret_cast<const char*>(bytes.data()), bytes.size() - 1});
  if (!line || bytes.back() != '\n') throw std::runtime_error("a log step without a log line");
  Bytes text(line->text.begin(), line->text.end());
  text.push_back('\0');
  return {Step::Kind::log, priority_of(line->priority), text};
}

Step read_step(const std::string& kind, std::istream& words) {
  if (kind == "reply") return {Step::Kind::reply, 0, read_bytes(words)};
  if (kind == "log") return read_log_step(words);
  uint32_t number = 0;
  words >> number;
  if (kind == "exchange") return {Step::Kind::exchange, number, read_bytes(words)};
  throw std::runtime_error("unknown step: " + kind);
}

std::vector<PlannedRequest> read_plan(std::istream& text) {
  std::vector<PlannedRequest> plan;
  for (std::string line; std::getline(text, line);) {
    std::istringstream words(line);
    std::string kind;
    words >> kind;
    if (kind == "request") {
      plan.push_back({read_bytes(words), {}});
    } else if (plan.empty()) {
      throw std::runtime_error("a step before the first request");
    } else {
      plan.back().steps.push_back(read_step(kind, words));
    }
  }
  return plan;
}

class Limit {
 public:
  Limit(int read_fd, int write_fd, std::vector<PlannedRequest> plan)
      : read_fd_(read_fd), write_fd_(write_fd), plan_(std::move(plan)) {
    for (uint32_t service : kServices) channels_[service] = bench::open_raw_channel(service);
  }

  void serve() {
    for (;;) {
      fd_set readable;
      FD_ZERO(&readable);
      FD_SET(read_fd_, &readable);
      select(read_fd_ + 1, &readable, nullptr, nullptr, nullptr);
      ssize_t size = read(read_fd_, request_, sizeof request_);
      if (size <= 0) return;
      for (const Step& step : planned(static_cast<size_t>(size))) play(step);
    }
  }

 private:
  const std::vector<Step>& planned(size_t size) const {
    for (const PlannedRequest& planned : plan_) {
      bool is_same =
          planned.request.size() == size && memcmp(planned.request.data(), request_, size) == 0;
      if (is_same) return planned.steps;
    }
    abort();
  }

  void play(const Step& step) {
    switch (step.kind) {
      case Step::Kind::log:
        __android_log_print(static_cast<int>(step.number), "RIL-QOREXT", "%s",
                            reinterpret_cast<const char*>(step.bytes.data()));
        return;
      case Step::Kind::exchange:
        return bench::exchange_raw(*channels_[step.number], step.bytes, response_);
      case Step::Kind::reply:
        if (write(write_fd_, step.bytes.data(), step.bytes.size()) < 0) abort();
        return;
    }
  }

  int read_fd_;
  int write_fd_;
  std::vector<PlannedRequest> plan_;
  std::map<uint32_t, std::unique_ptr<qmi_transport::Channel>> channels_;
  uint8_t request_[kRequestSize];
  uint8_t response_[qmi_transport::kMaxPacketSize];
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return EXIT_FAILURE;
  std::ifstream text(getenv("QOREXT_BENCH_PLAN"));
  auto limit = std::make_unique<Limit>(atoi(argv[1]), atoi(argv[2]), read_plan(text));
  limit->serve();
}
