// SPDX-License-Identifier: Apache-2.0
#include "modem/control/capture_commands.h"

#include "modem/messages/indications.h"
#include "modem/messages/services.h"

namespace modem {
namespace {

using nlohmann::json;

std::string hob_word(uint32_t state) {
  switch (state) {
    case kHobReady:
      return "ready";
    case kHobSaved:
      return "saved";
    case kHobFailed:
      return "failed";
    default:
      return "unknown " + std::to_string(state);
  }
}

}  // namespace

void describe(Archive& archive, HobSaveArguments& arguments) {
  archive.number("count", arguments.count, 1, kMaxBurst);
  archive.number("interval_ms", arguments.interval_ms);
}

json start_upload(Simulator& simulator, UploadOptions& options) {
  return {{"upload", simulator.uploads.add(options)}};
}

json list_uploads(Simulator& simulator) { return {{"uploads", simulator.uploads.list()}}; }

json send_kpi_packet(Simulator& simulator, KpiPacketOptions& options) {
  simulator.device.outbox.add(
      {Action::Kind::broadcast, qorext_service().id, 0, kpi_indication(options)});
  return json::object();
}

json list_hob_states(Simulator& simulator) {
  json words = json::array();
  for (uint32_t state : simulator.device.state.features.hob_states)
    words.push_back(hob_word(state));
  return {{"states", words}, {"answers", simulator.device.hob_answers}};
}

json ask_for_save(Simulator& simulator, HobSaveArguments& arguments) {
  indicate(simulator.device.outbox, {.indication = "hob_save",
                                     .fields = json::object(),
                                     .count = arguments.count,
                                     .interval = milliseconds(arguments.interval_ms)});
  return {{"answers", simulator.device.hob_answers}};
}

}  // namespace modem
