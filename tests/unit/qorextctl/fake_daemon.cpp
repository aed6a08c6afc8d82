// SPDX-License-Identifier: Apache-2.0
// Reads requests and answers them in the way that the environment variable FAKE_DAEMON names.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "tests/unit/qorextctl/frame_samples.h"

namespace {

using qorextctl::Bytes;

struct Channels {
  int replies;
  int unsolicited;
};

void put(int fd, const Bytes& bytes) {
  if (write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) _exit(9);
}

void say(const std::string& line) { put(STDERR_FILENO, {line.begin(), line.end()}); }

Bytes reply_to(const Bytes& request, uint32_t status) {
  return qorextctl::cdma_frame(qorextctl::load_le(request, 0, 4), status, {});
}

void answer(const Channels& channels, const Bytes& request) {
  put(channels.replies, reply_to(request, 0));
}

void refuse(const Channels& channels, const Bytes& request) {
  put(channels.replies, reply_to(request, 5));
}

void answer_unknown(const Channels& channels, const Bytes& request) {
  put(channels.replies, reply_to(request, 6));
}

void answer_twice(const Channels& channels, const Bytes& request) {
  Bytes both = reply_to(request, 0);
  Bytes second = reply_to(request, 6);
  both.insert(both.end(), second.begin(), second.end());
  put(channels.replies, both);
}

void answer_in_part(const Channels& channels, const Bytes& request) {
  Bytes frame = reply_to(request, 0);
  frame.resize(5);
  put(channels.replies, frame);
  _exit(3);
}

void answer_and_end(const Channels& channels, const Bytes& request) {
  answer(channels, request);
  _exit(3);
}

void stay_silent(const Channels& /*channels*/, const Bytes& /*request*/) {}

// Answers the first request when the second one comes.
void answer_late(const Channels& channels, const Bytes& request) {
  static Bytes first;
  bool is_first = first.empty();
  if (is_first) first = request;
  if (is_first) return;
  answer(channels, first);
  answer(channels, request);
}

// Reads no more requests.
void turn_deaf(const Channels& /*channels*/, const Bytes& /*request*/) { pause(); }

void end(const Channels& /*channels*/, const Bytes& /*request*/) {
  say("leaving\n");
  _exit(3);
}

// Two frames in three writes, cut within the frames.
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

// Never stops, whether or not the parent has gone on.
[[noreturn]] void flood(int fd, uint8_t byte) {
  Bytes bytes(1 << 20, byte);
  for (;;) put(fd, bytes);
}

void flood_frames(const Channels& channels, const Bytes& /*request*/) {
  flood(channels.unsolicited, 0);
}

void flood_garbage(const Channels& channels, const Bytes& /*request*/) {
  flood(channels.unsolicited, 0xFF);
}

void flood_replies(const Channels& channels, const Bytes& request) {
  answer(channels, request);
  flood(channels.replies, 0xFF);
}

// Lines of the log as long as they come.
void say_much(const Channels& channels, const Bytes& request) {
  say("E/RIL-QOREXT(1): " + std::string(200'000, 'x'));
  say(std::string(200'000, 'y') + "\nshort\n" + std::string(100'000, 'z'));
  answer(channels, request);
}

// What the parent gave: the instance, the environment, the open descriptors beside 0, 1 and 2.
void tell_start(const Channels& channels, const Bytes& request) {
  std::string open;
  for (int fd = STDERR_FILENO + 1; fd < 256; ++fd) {
    if (fcntl(fd, F_GETFD) >= 0) open += " " + std::to_string(fd);
  }
  say("open" + open + "\nmodem " + getenv("QOREXT_MODEM") + "\nroot " +
      getenv("QOREXT_PHONE_ROOT") + "\nrequest " + std::to_string(request.size()) + "\n");
  answer(channels, request);
}

struct Mode {
  const char* name;
  void (*act)(const Channels& channels, const Bytes& request);
};

constexpr Mode kModes[] = {
    {"answer-and-end", answer_and_end},
    {"answer", answer},
    {"refuse", refuse},
    {"unknown", answer_unknown},
    {"twice", answer_twice},
    {"part", answer_in_part},
    {"silent", stay_silent},
    {"late", answer_late},
    {"deaf", turn_deaf},
    {"end", end},
    {"notify", notify},
    {"start", tell_start},
    {"flood-frames", flood_frames},
    {"flood-garbage", flood_garbage},
    {"flood-replies", flood_replies},
    {"much", say_much},
};

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
  say("arguments " + std::string(argv[1]) + " " + argv[2] + " " + argv[3] + " " + argv[4] + "\n");
  Channels channels{atoi(argv[2]), atoi(argv[3])};
  Bytes buffer(17408);
  for (;;) {
    ssize_t size = read(atoi(argv[1]), buffer.data(), buffer.size());
    if (size <= 0) return size == 0 ? 0 : 7;
    mode->act(channels, {buffer.begin(), buffer.begin() + size});
  }
}
