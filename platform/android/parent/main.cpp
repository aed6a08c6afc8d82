// SPDX-License-Identifier: Apache-2.0
// A parent that people and tests can talk to: each line of standard input is a request as hex text;
// replies, unsolicited messages and the daemon's exits are printed as they come. Ends with its
// input. usage: qorext_parent PROGRAM INSTANCE
#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "platform/android/parent/channel.h"

namespace {

constexpr size_t kMaxFrame = 65536;  // a pipe's capacity: the daemon writes a frame at once
constexpr int kExitTimeoutMs = 5000;

std::string to_bytes(const std::string& hex) {
  std::string bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(strtoul(hex.substr(i, 2).c_str(), nullptr, 16));
  }
  return bytes;
}

// Prints what the pipe holds; false at its end.
bool print_frame(const char* kind, int fd) {
  static uint8_t frame[kMaxFrame];
  ssize_t size = read(fd, frame, sizeof frame);
  if (size <= 0) return false;
  printf("%s ", kind);
  for (ssize_t i = 0; i < size; ++i) printf("%02x", frame[i]);
  printf("\n");
  return true;
}

long now_ms() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000 + now.tv_nsec / 1'000'000;
}

class Parent {
 public:
  Parent(const char* program, unsigned instance) : program_(program), instance_(instance) {}

  int run() {
    while (start_qorext(program_, instance_, &channel_)) {
      started_ms_ = now_ms();
      printf("started %d\n", channel_.pid);
      bool is_input_open = relay();
      int status = stop_qorext(&channel_, kExitTimeoutMs);
      if (!is_input_open) return EXIT_SUCCESS;
      int delay = restart_delay_.next_ms(now_ms() - started_ms_);
      printf("exited with status 0x%x, next start in %d ms\n", static_cast<unsigned>(status),
             delay);
      poll(nullptr, 0, delay);
    }
    perror("qorext_parent: cannot start the daemon");
    return EXIT_FAILURE;
  }

 private:
  // Until the daemon exits (true) or the input ends (false).
  bool relay() {
    pollfd waits[] = {{STDIN_FILENO, POLLIN, 0},
                      {channel_.replies, POLLIN, 0},
                      {channel_.unsolicited, POLLIN, 0}};
    while (poll(waits, 3, -1) >= 0) {
      if (waits[1].revents != 0 && !print_frame("reply", channel_.replies)) return true;
      if (waits[2].revents != 0 && !print_frame("unsolicited", channel_.unsolicited)) return true;
      if (waits[0].revents != 0 && !forward_requests()) return false;
    }
    return false;
  }

  // Writes the requests of what has been typed; false at the end of the input.
  bool forward_requests() {
    char text[4096];
    ssize_t size = read(STDIN_FILENO, text, sizeof text);
    if (size <= 0) return false;
    input_.append(text, static_cast<size_t>(size));
    for (size_t end; (end = input_.find('\n')) != std::string::npos; input_.erase(0, end + 1)) {
      std::string request = to_bytes(input_.substr(0, end));
      if (write(channel_.requests, request.data(), request.size()) < 0) {
        printf("refused: %s\n", strerror(errno));
      }
    }
    return true;
  }

  const char* program_;
  unsigned instance_;
  QorextChannel channel_;
  RestartDelay restart_delay_;
  long started_ms_ = 0;
  std::string input_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: qorext_parent PROGRAM INSTANCE\n");
    return 2;
  }
  setvbuf(stdout, nullptr, _IOLBF, 0);
  signal(SIGPIPE, SIG_IGN);
  return Parent(argv[1], static_cast<unsigned>(strtoul(argv[2], nullptr, 10))).run();
}
