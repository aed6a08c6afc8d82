// SPDX-License-Identifier: Apache-2.0
// Reads requests and answers them as the environment variable FAKE_DAEMON selects.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "tests/unit/qorextctl/frame_samples.h"

namespace {

using qorextctl::Bytes;

enum Status : uint32_t { kSuccess = 0, kFailure = 5, kNotSupported = 6 };

struct Channels {
  int replies;
  int unsolicited;
};

void put(int fd, const Bytes& bytes) {
  if (write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) _exit(9);
}

void put_log(const std::string& line) { put(STDERR_FILENO, {line.begin(), line.end()}); }

Bytes reply_to(const Bytes& request, Status status) {
  return qorextctl::cdma_frame(qorextctl::load_le(request, 0, 4), status, {});
}

void answer(const Channels& channels, const Bytes& request) {
  put(channels.replies, reply_to(request, kSuccess));
}

void answer_twice(const Channels& channels, const Bytes& request) {
  Bytes both = reply_to(request, kSuccess);
  Bytes second = reply_to(request, kNotSupported);
  both.insert(both.end(), second.begin(), second.end());
  put(channels.replies, both);
}

void answer_in_part(const Channels& channels, const Bytes& request) {
  Bytes frame = reply_to(request, kSuccess);
  frame.resize(5);
  put(channels.replies, frame);
  _exit(3);
}

// Answers the first request when the second one arrives.
void answer_late(const Channels& channels, const Bytes& request) {
  static Bytes first;
  bool is_first = first.empty();
  if (is_first) first = request;
  if (is_first) return;
  answer(channels, first);
  answer(channels, request);
}

// Writes two frames with three writes, which end within the frames.
void notify(const Channels& channels, const Bytes& request) {
  Bytes frames = qorextctl::cdma_unsolicited(0x020001B0, {7, 0, 0, 0});
  Bytes second = qorextctl::generic_unsolicited(0x04001500, {9});
  frames.insert(frames.end(), second.begin(), second.end());
  for (size_t start = 0; start < frames.size(); start += 25) {
    qorextctl::View piece = qorextctl::part(frames, start, 25);
    put(channels.unsolicited, {piece.begin(), piece.end()});
  }
  answer(channels, request);
}

// Never stops writing.
[[noreturn]] void flood(int fd, uint8_t byte) {
  Bytes bytes(1 << 20, byte);
  for (;;) put(fd, bytes);
}

// Writes log lines that are too long.
void log_long_lines(const Channels& channels, const Bytes& request) {
  put_log("E/RIL-QOREXT(1): " + std::string(200'000, 'x'));
  put_log(std::string(200'000, 'y') + "\nshort\n" + std::string(100'000, 'z'));
  answer(channels, request);
}

// Logs the open descriptors besides 0, 1 and 2, the environment and the request's size.
void log_start(const Channels& channels, const Bytes& request) {
  std::string open;
  for (int fd = STDERR_FILENO + 1; fd < 256; ++fd) {
    if (fcntl(fd, F_GETFD) >= 0) open += " " + std::to_string(fd);
  }
  put_log("open" + open + "\nmodem " + getenv("QOREXT_MODEM") + "\nroot " +
          getenv("QOREXT_PHONE_ROOT") + "\nrequest " + std::to_string(request.size()) + "\n");
  answer(channels, request);
}

struct Mode {
  const char* name;
  void (*act)(const Channels& channels, const Bytes& request);
};

// clang-format off
constexpr Mode kModes[] = {
    {"answer", answer},
    {"answer-and-end", [](const Channels& to, const Bytes& request) { answer(to, request); _exit(3); }},
    {"refuse", [](const Channels& to, const Bytes& request) { put(to.replies, reply_to(request, kFailure)); }},
    {"unknown", [](const Channels& to, const Bytes& request) { put(to.replies, reply_to(request, kNotSupported)); }},
    {"twice", answer_twice},
    {"part", answer_in_part},
    {"silent", [](const Channels&, const Bytes&) {}},
    {"late", answer_late},
    {"unread", [](const Channels&, const Bytes&) { pause(); }},
    {"end", [](const Channels&, const Bytes&) { put_log("leaving\n"); _exit(3); }},
    {"notify", notify},
    {"start", log_start},
    {"flood-frames", [](const Channels& to, const Bytes&) { flood(to.unsolicited, 0); }},
    {"flood-corrupt", [](const Channels& to, const Bytes&) { flood(to.unsolicited, 0xFF); }},
    {"flood-replies", [](const Channels& to, const Bytes& request) { answer(to, request); flood(to.replies, 0xFF); }},
    {"long-log", log_long_lines},
};
// clang-format on

const Mode* chosen_mode() {
  const char* name = getenv("FAKE_DAEMON");
  for (const Mode& mode : kModes) {
    if (name && strcmp(mode.name, name) == 0) return &mode;
  }
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  const Mode* mode = chosen_mode();
  if (argc != 5 || !mode) return 8;
  put_log(std::string("arguments ") + argv[1] + " " + argv[2] + " " + argv[3] + " " + argv[4] +
          "\n");
  Channels channels{atoi(argv[2]), atoi(argv[3])};
  Bytes buffer(17408);
  for (;;) {
    ssize_t size = read(atoi(argv[1]), buffer.data(), buffer.size());
    if (size <= 0) return size == 0 ? 0 : 7;
    mode->act(channels, {buffer.begin(), buffer.begin() + size});
  }
}
