// SPDX-License-Identifier: Apache-2.0
// A handset for measuring: a modem, the phone's files, and daemons started as their parent does it.
// Nobody reads their log, so that it costs what writing it costs.
#pragma once

#include <memory>
#include <string>

#include "tools/qorextctl/daemon/daemon.h"
#include "tools/qorextctl/daemon/private_setup.h"

namespace bench {

// Which processors the processes may use.
enum class Spread {
  free,      // all, as the scheduler likes
  one_core,  // one for everything
  two_cores  // one for the daemon, one for the parent and the modem
};

// A generic request that nobody serves; 8 bytes answer it.
constexpr uint8_t kUnknownRequest[] = {0, 0x0F, 0xFF, 0xFF, 0, 0, 0, 0};

class Rig {
 public:
  // Binds the calling thread as its processes are bound.
  Rig(const std::string& modem_program, Spread spread);
  // With a modem that runs already: "unix:PATH" or "qrtr".
  explicit Rig(const std::string& running_modem);

  // Returns when the program serves requests.
  std::unique_ptr<qorextctl::Daemon> start(const std::string& program) const;

  const std::string& modem() const { return setup_->modem(); }
  const std::string& phone_root() const { return setup_->phone_root(); }
  const std::string& control() const { return setup_->control(); }

 private:
  Spread spread_;
  std::unique_ptr<qorextctl::Setup> setup_;
  qorextctl::UniqueFd log_;
};

// All of the build that is measured.
constexpr char kDaemonProgram[] = QOREXT_BIN "/qorext_client";
constexpr char kModemProgram[] = QOREXT_BIN "/qorext_modem";
constexpr char kQuickModemProgram[] = QOREXT_BIN "/../bench/bench_modem";
constexpr char kLimitProgram[] = QOREXT_BIN "/../bench/bench_limit";

// Of all its threads, since its start.
double processor_seconds(const qorextctl::Daemon& daemon);

// Binds the calling thread, and with it the processes that it starts, as the daemon is bound.
void bind_as_daemon(Spread spread);

// Seconds of the clock that never jumps.
double now();

// Long enough for everything that is measured.
qorextctl::Deadline patience();

}  // namespace bench
