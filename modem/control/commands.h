// SPDX-License-Identifier: Apache-2.0
// The commands of the control socket.
#pragma once

#include <string>

#include "modem/simulator/simulator.h"

namespace modem {

// Of qorext_modem.
extern const char* const kVersion;

// Commands that also concern the connection or the process.
constexpr const char* kWatch = "watch";
constexpr const char* kQuit = "quit";

// Returns the members of the answer. Throws ArchiveError for a wrong argument and another
// std::exception for an unknown command or one that cannot be carried out.
nlohmann::json run_command(Simulator& simulator, const std::string& name,
                           const nlohmann::json& arguments);

}  // namespace modem
