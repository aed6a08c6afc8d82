// SPDX-License-Identifier: Apache-2.0
// The control socket's commands for KPI logs and the hand-off block.
#pragma once

#include "modem/simulator/simulator.h"

namespace modem {

nlohmann::json start_upload(Simulator& simulator, UploadOptions& options);
nlohmann::json list_uploads(Simulator& simulator);
nlohmann::json send_kpi_packet(Simulator& simulator, KpiPacketOptions& options);

struct HobSaveArguments {
  uint32_t count = 1;
  uint32_t interval_ms = 0;
};
void describe(Archive& archive, HobSaveArguments& arguments);

// Tells how many answers there were before, so that the new ones can be told from them.
nlohmann::json ask_for_save(Simulator& simulator, HobSaveArguments& arguments);
nlohmann::json list_hob_states(Simulator& simulator);

}  // namespace modem
