// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/daemon/daemon.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace qorextctl {

namespace {

constexpr auto kEndTime = std::chrono::seconds(2);

}  // namespace

// This program's ends of the pipes.
struct Daemon::Ends {
  UniqueFd requests;
  UniqueFd replies;
  UniqueFd unsolicited;
  UniqueFd log;
};

Result<std::unique_ptr<Daemon>> Daemon::start(const DaemonOptions& options) {
  signal(SIGPIPE, SIG_IGN);  // a write to a daemon that has ended fails with EPIPE
  auto requests = make_pipe();
  auto replies = make_pipe();
  auto unsolicited = make_pipe();
  auto log = options.on_timed_log ? make_timed_pipe() : make_pipe();
  if (!requests || !replies || !unsolicited || !log) {
    return transport_error(fmt::format("cannot create pipes: {}", strerror(errno)));
  }
  Launch launch;
  launch.descriptors = {requests->read.get(), replies->write.get(), unsolicited->write.get()};
  launch.arguments = {options.executable};
  for (int fd : launch.descriptors) launch.arguments.push_back(std::to_string(fd));
  launch.arguments.push_back(std::to_string(options.instance));
  launch.environment = {{"QOREXT_MODEM", options.modem}, {"QOREXT_PHONE_ROOT", options.phone_root}};
  launch.output = options.log >= 0 ? options.log : log->write.get();
  auto process = Process::start(launch);
  if (!process) return process.error();
  Ends ends{std::move(requests->write), std::move(replies->read), std::move(unsolicited->read),
            std::move(log->read)};
  return std::unique_ptr<Daemon>(new Daemon(std::move(*process), std::move(ends), options));
}

Daemon::Daemon(Process process, Ends ends, const DaemonOptions& options)
    : log_(options.on_log, options.max_log_lines),
      requests_(std::move(ends.requests)),
      replies_(std::move(ends.replies)),
      unsolicited_(std::move(ends.unsolicited)),
      process_(std::move(process)) {
  log_.start(std::move(ends.log), options.on_timed_log);
}

Daemon::~Daemon() {
  close_requests();
  process_.wait(Deadline::in(kEndTime));
}

bool Daemon::wait_taken(Deadline deadline) const {
  constexpr int kPauseMs = 1;
  for (;;) {
    int waiting = 0;
    if (ioctl(requests_.get(), FIONREAD, &waiting) != 0 || waiting == 0) return true;
    if (deadline.passed()) return false;
    pollfd entry{requests_.get(), 0, 0};  // POLLERR: the reading end is closed
    if (poll(&entry, 1, kPauseMs) > 0) return true;
  }
}

bool Daemon::send(View request) { return write_whole(requests_.get(), request); }

std::optional<Bytes> Daemon::receive_reply(ReplyForm form, Deadline deadline) {
  return replies_.receive([form](View bytes) { return reply_size(bytes, form); }, deadline);
}

std::optional<Bytes> Daemon::receive_unsolicited(Deadline deadline) {
  return unsolicited_.receive(unsolicited_size, deadline);
}

}  // namespace qorextctl
