// The limit: what the daemon's requests cost when nothing is done but their calls. It is started
// like the daemon and plays a plan recorded from it: for each request the same select and read, the
// same packets to the modem (each one send and one blocking receive), the same log lines (their
// texts ready-made, through the same log library), the same write of the same reply, in the
// daemon's order. There is no dispatch, no encoding, no formatting and no second thread.
#include <android/log.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>

#include "plan.h"
#include "qmi_transport/transport.h"
#include "qmi_transport/wait.h"

namespace {

using bench::PlannedRequest;
using bench::Step;
using qmi_transport::Channel;

constexpr size_t kRequestSize = 17408;
constexpr uint32_t kServices[] = {2, 3, 0xE7};
constexpr std::chrono::seconds kPatience{10};

// The first instance of the service, whatever its version.
std::unique_ptr<Channel> open_service(uint32_t service) {
  auto endpoint = qmi_transport::endpoint_from_environment().value();
  auto watch = qmi_transport::watch_service(endpoint, service, 1);
  qmi_transport::Announcement announcement{};
  while (qmi_transport::wait_for(watch->fd(), POLLIN, qmi_transport::in(kPatience))) {
    if (watch->next(announcement) != qmi_transport::Status::ok) continue;
    if (announcement.kind == qmi_transport::Announcement::Kind::appeared) break;
  }
  auto channel = qmi_transport::open_channel(endpoint, announcement.server);
  fcntl(channel->fd(), F_SETFL, fcntl(channel->fd(), F_GETFL) & ~O_NONBLOCK);
  return channel;
}

class Limit {
 public:
  Limit(int read_fd, int write_fd, std::vector<PlannedRequest> plan)
      : read_fd_(read_fd), write_fd_(write_fd), plan_(std::move(plan)) {
    for (uint32_t service : kServices) channels_[service] = open_service(service);
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
        __android_log_write(static_cast<int>(step.number), "RIL-QOREXT",
                            reinterpret_cast<const char*>(step.bytes.data()));
        return;
      case Step::Kind::exchange:
        return exchange(channels_[step.number]->fd(), step.bytes);
      case Step::Kind::reply:
        if (write(write_fd_, step.bytes.data(), step.bytes.size()) < 0) abort();
        return;
    }
  }

  void exchange(int socket, const qorextctl::Bytes& packet) {
    if (send(socket, packet.data(), packet.size(), MSG_NOSIGNAL) < 0) abort();
    if (recv(socket, response_, sizeof response_, 0) <= 0) abort();
  }

  int read_fd_;
  int write_fd_;
  std::vector<PlannedRequest> plan_;
  std::map<uint32_t, std::unique_ptr<Channel>> channels_;
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
