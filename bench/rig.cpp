// SPDX-License-Identifier: Apache-2.0
#include "bench/rig.h"

#include <fcntl.h>
#include <sched.h>
#include <time.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "tests/e2e/support/value_or_throw.h"

namespace bench {

namespace {

using e2e::value_or_throw;
using qorextctl::Daemon;

constexpr double kPatience = 300;  // seconds
constexpr int kDaemonCore = 0;
constexpr int kOtherCore = 1;

void bind_to(int core) {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  CPU_SET(core, &cores);
  if (sched_setaffinity(0, sizeof cores, &cores) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot bind to a core");
  }
}

void bind_others(Spread spread) {
  if (spread != Spread::free) bind_to(spread == Spread::one_core ? kDaemonCore : kOtherCore);
}

double seconds_of(clockid_t clock) {
  timespec time = {};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

bool serves(Daemon& daemon) {
  return daemon.send(kUnknownRequest) &&
         daemon.receive_reply(qorextctl::ReplyForm::generic, patience());
}

}  // namespace

Rig::Rig(const std::string& modem_program, Spread spread)
    : spread_(spread), log_(open("/dev/null", O_WRONLY | O_CLOEXEC)) {
  bind_others(spread_);
  qorextctl::SetupOptions options;
  options.modem_executable = modem_program;
  setup_ = value_or_throw(qorextctl::Setup::create(options));
}

Rig::Rig(const std::string& running_modem) : spread_(Spread::free) {
  qorextctl::SetupOptions options;
  options.modem = running_modem;
  setup_ = value_or_throw(qorextctl::Setup::create(options));
}

std::unique_ptr<Daemon> Rig::start(const std::string& program) const {
  qorextctl::DaemonOptions options;
  options.executable = program;
  options.modem = setup_->modem();
  options.phone_root = setup_->phone_root();
  options.log = log_.get();
  bind_as_daemon(spread_);
  auto daemon = value_or_throw(Daemon::start(options));
  bind_others(spread_);
  if (!serves(*daemon)) throw std::runtime_error(program + " does not come to serve requests");
  return daemon;
}

double processor_seconds(const Daemon& daemon) {
  clockid_t clock = 0;
  if (clock_getcpuclockid(daemon.process().pid(), &clock) != 0) {
    throw std::runtime_error("the daemon has no clock");
  }
  return seconds_of(clock);
}

void bind_as_daemon(Spread spread) {
  if (spread != Spread::free) bind_to(kDaemonCore);
}

double now() { return seconds_of(CLOCK_MONOTONIC); }

qorextctl::Deadline patience() { return qorextctl::Deadline::in_seconds(kPatience); }

}  // namespace bench
