// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/modem/modem_control.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>

#include "platform/linux/qmi_json/foreign_json.h"

namespace qorextctl {

namespace {

Error unreachable(const std::string& path, const std::string& why) {
  return transport_error(fmt::format(
      "the modem's control socket {}: {}; does qorext_modem run with --control?", path, why));
}

// The longest answer, and all that the modem queues for a connection that does not read.
constexpr size_t kMaxLine = size_t{64} << 20;
constexpr size_t kMaxReceived = size_t{256} << 20;

std::string reason() { return errno == EAGAIN ? "the modem does not listen" : strerror(errno); }

// Of connect() and send(); receive_line() has a deadline.
void limit_time(const UniqueFd& socket, double seconds) {
  auto time =
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::duration<double>(seconds));
  constexpr int64_t kMicroseconds = 1'000'000;
  timeval limit{time.count() / kMicroseconds, time.count() % kMicroseconds};
  setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

}  // namespace

Result<ModemControl> ModemControl::connect(const std::string& path, double seconds) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return unreachable(path, "the path is too long");
  memcpy(address.sun_path, path.data(), path.size());
  UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  limit_time(fd, seconds);
  const auto* target = reinterpret_cast<const sockaddr*>(&address);
  if (!fd.valid() || ::connect(fd.get(), target, sizeof address) != 0) {
    return unreachable(path, reason());
  }
  return ModemControl(std::move(fd), path);
}

bool ModemControl::send_line(const std::string& line) const {
  size_t done = 0;
  while (done < line.size()) {
    ssize_t sent = send(socket_.get(), line.data() + done, line.size() - done, MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) return false;
    if (sent > 0) done += static_cast<size_t>(sent);
  }
  return true;
}

std::optional<std::string> ModemControl::take_line() {
  size_t end = rest_.find('\n', searched_);
  searched_ = end == std::string::npos ? rest_.size() : 0;
  if (end == std::string::npos) return std::nullopt;
  std::string line = rest_.substr(0, end);
  rest_.erase(0, end + 1);
  return line;
}

// The deadline is checked after a read too, for a modem that never stops sending.
Result<std::string> ModemControl::receive_line(Deadline deadline) {
  for (bool is_late = false;; is_late = deadline.passed()) {
    if (auto line = take_line()) return *line;
    if (is_late) return unreachable(path_, "no answer in time");
    if (rest_.size() > kMaxLine) return unreachable(path_, "the answer's line has no end");
    pollfd entries[] = {{socket_.get(), POLLIN, 0}, {interrupt_fd_, POLLIN, 0}};
    int ready = poll(entries, std::size(entries), deadline.remaining_ms());
    if (ready == 0) return unreachable(path_, "no answer in time");
    if (ready < 0) continue;
    if (entries[1].revents != 0) return transport_error("modem: interrupted");
    char buffer[65536];
    ssize_t size = recv(socket_.get(), buffer, sizeof buffer, 0);
    if (size == 0 || (size < 0 && errno != EINTR)) return unreachable(path_, "the modem has gone");
    if (size > 0) rest_.append(buffer, static_cast<size_t>(size));
  }
}

Result<Json> ModemControl::call(const Json& command, Deadline deadline) {
  std::string line_sent = command.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
  if (!send_line(line_sent)) return unreachable(path_, reason());
  size_t received = 0;
  for (;;) {
    auto line = receive_line(deadline);
    if (!line) return line.error();
    auto [answer, excess] = qmi_json::parse_foreign<Json>(*line);
    if (excess) return unreachable(path_, std::string("the answer ") + excess);
    if (!answer.is_object()) {
      return unreachable(path_, "the answer is not a JSON object: " + beginning_of(*line));
    }
    if (answer.contains("ok")) {
      if (!answer["ok"].is_boolean())
        return unreachable(path_, "the answer's \"ok\" is not true or false");
      return std::move(answer);
    }
    reports_.push_back(std::move(answer));
    received += line->size();
    if (received > kMaxReceived) return unreachable(path_, "too much data before the answer");
    if (deadline.passed()) return unreachable(path_, "no answer in time");
  }
}

}  // namespace qorextctl
