// SPDX-License-Identifier: Apache-2.0
#include "bench/rig.h"

#include <fcntl.h>
#include <sched.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "tests/e2e/support/value_or_throw.h"
#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/modem/ask_modem.h"

namespace bench {

namespace {

using e2e::value_or_throw;

constexpr double kLongSeconds = 300;
constexpr int kDaemonCore = 0;
constexpr int kOtherCore = 1;

// A generic request without a handler; the reply has 8 bytes.
const Bytes kUnknownRequest = {0, 0x0F, 0xFF, 0xFF, 0, 0, 0, 0};

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

Bytes request_bytes(const std::string& name, const std::vector<std::string>& arguments = {}) {
  std::vector<std::string> words = {name};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return value_or_throw(qorextctl::parse_command(words, false)).bytes;
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
  bool serves = daemon->send(kUnknownRequest) &&
                daemon->receive_reply(qorextctl::ReplyForm::generic, long_deadline());
  if (!serves) throw std::runtime_error(program + " does not serve requests");
  return daemon;
}

void Rig::command_modem(const qorextctl::Json& command) const {
  constexpr double kSecondsWithoutProgress = 60;
  auto control = value_or_throw(qorextctl::ModemControl::connect(setup_->control()));
  auto answer = value_or_throw(qorextctl::call_to_end(control, command, kSecondsWithoutProgress));
  if (!answer.value("ok", false)) throw std::runtime_error(answer.dump());
}

std::vector<Measured> measured_requests() {
  return {{"unknown", kUnknownRequest},
          {"nv_read", request_bytes("nv-read", {"rde-id=28"})},
          {"get_nam", request_bytes("get-nam")},
          {"data_plmn", request_bytes("data-plmn")}};
}

void exchange(Daemon& daemon, const Bytes& request) {
  uint8_t reply[4096];
  if (!daemon.send(request) || read(daemon.replies().fd(), reply, sizeof reply) <= 0) {
    throw std::runtime_error("no reply");
  }
}

double processor_seconds(const Daemon& daemon) {
  clockid_t clock = 0;
  if (clock_getcpuclockid(daemon.process().pid(), &clock) != 0) {
    throw std::runtime_error("cannot read the processor time of the daemon");
  }
  return seconds_of(clock);
}

void bind_as_daemon(Spread spread) {
  if (spread != Spread::free) bind_to(kDaemonCore);
}

double now() { return seconds_of(CLOCK_MONOTONIC); }

qorextctl::Deadline long_deadline() { return qorextctl::Deadline::in_seconds(kLongSeconds); }

nlohmann::json medians(const Figures& figures) {
  nlohmann::json result = nlohmann::json::object();
  for (const auto& [name, samples] : figures) result[name] = median(samples);
  return result;
}

}  // namespace bench
