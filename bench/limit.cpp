// SPDX-License-Identifier: Apache-2.0
// The limit: what the daemon's requests cost when nothing is done but their calls. It is started
// like the daemon and plays a plan recorded from it: for each request the same select and read, the
// same packets to the modem (each one send and one blocking receive), the same log lines (through
// the same log call, their texts ready-made), the same write of the same reply, in the daemon's
// order. There is no dispatch, no encoding, no formatting and no second thread.
#include <android/log.h>
#include <sys/select.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>

#include "bench/plan.h"
#include "bench/raw_channel.h"

namespace {

using bench::PlannedRequest;
using bench::Step;

constexpr size_t kRequestSize = 17408;
constexpr uint32_t kServices[] = {2, 3, 0xE7};
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
      bool is_it =
          planned.request.size() == size && memcmp(planned.request.data(), request_, size) == 0;
      if (is_it) return planned.steps;
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
  std::ifstream text(getenv(bench::kPlanVariable));
  auto limit = std::make_unique<Limit>(atoi(argv[1]), atoi(argv[2]), bench::read_plan(text));
  limit->serve();
}
