#include "modem/modem_control.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>

namespace qorextctl {

namespace {

Error unreachable(const std::string& path, const std::string& why) {
  return transport_error(fmt::format(
      "the modem's control socket {}: {}; does qorext_modem run with --control?", path, why));
}

std::string reason() { return errno == EAGAIN ? "the modem does not listen" : strerror(errno); }

// Of connecting and sending; receiving has deadlines of its own.
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

Result<std::string> ModemControl::receive_line(Deadline deadline) {
  for (;;) {
    size_t end = rest_.find('\n');
    if (end != std::string::npos) {
      std::string line = rest_.substr(0, end);
      rest_.erase(0, end + 1);
      return line;
    }
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
  if (!send_line(command.dump() + "\n")) return unreachable(path_, reason());
  for (;;) {
    auto line = receive_line(deadline);
    if (!line) return line.error();
    Json answer = Json::parse(*line, nullptr, false);
    if (!answer.is_object()) return unreachable(path_, "the answer is no JSON object: " + *line);
    if (answer.contains("ok")) return answer;
    told_.push_back(std::move(answer));
  }
}

}  // namespace qorextctl
