// SPDX-License-Identifier: Apache-2.0
// What the benchmarks measure, and how: a modem, the phone's files, daemons started as their parent
// starts them, requests, and the figures that they result in. The daemon's log goes to /dev/null.
#pragma once

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/load/engine.h"
#include "tools/qorextctl/modem/modem_control.h"

namespace bench {

using qorextctl::Bytes;
using qorextctl::Daemon;

// The processors that the processes may use.
enum class Spread {
  free,      // all
  one_core,  // one for everything
  two_cores  // one for the daemon, one for the parent and the modem
};

class Rig {
 public:
  // Binds the calling thread as its processes are bound.
  Rig(const std::string& modem_program, Spread spread);
  // Uses a running modem: "unix:PATH" or "qrtr".
  explicit Rig(const std::string& running_modem);

  // Returns when the program serves requests.
  std::unique_ptr<Daemon> start(const std::string& program) const;

  const std::string& modem() const { return setup_->modem(); }
  const std::string& phone_root() const { return setup_->phone_root(); }
  // Sends a command to the control socket. Returns when its work has ended.
  void command_modem(const qorextctl::Json& command) const;

 private:
  Spread spread_;
  std::unique_ptr<qorextctl::Setup> setup_;
  qorextctl::UniqueFd log_;
};

constexpr char kDaemonProgram[] = QOREXT_BIN "/qorext_client";
constexpr char kModemProgram[] = QOREXT_BIN "/qorext_modem";
constexpr char kQuickModemProgram[] = QOREXT_BIN "/../bench/bench_modem";
constexpr char kLimitProgram[] = QOREXT_BIN "/../bench/bench_limit";

// A request with the name that it has in the results.
struct Measured {
  std::string name;
  Bytes request;
};
std::vector<Measured> measured_requests();

// Writes a request and reads its reply. Throws when there is none.
void exchange(Daemon& daemon, const Bytes& request);

// All threads of the daemon, since its start.
double processor_seconds(const Daemon& daemon);

// Binds the calling thread, and the processes that it starts, as the daemon is bound.
void bind_as_daemon(Spread spread);

// Monotonic clock, in seconds.
double now();

// A deadline longer than any measurement.
qorextctl::Deadline long_deadline();

// Samples by their names in the results.
using Samples = std::vector<double>;
using Figures = std::map<std::string, Samples>;
inline double median(const Samples& samples) { return qorextctl::quantile(samples, 0.5); }
nlohmann::json medians(const Figures& figures);

}  // namespace bench
