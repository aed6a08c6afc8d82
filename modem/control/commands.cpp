// SPDX-License-Identifier: Apache-2.0
#include "modem/control/commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "modem/messages/outbox.h"
#include "modem/messages/services.h"
#include "modem/state/state_keys.h"

namespace modem {

const char* const kVersion = QOREXT_VERSION;

namespace {

using nlohmann::json;

constexpr uint32_t kMaxIntervalMs = 3600000;  // keeps the time of a burst's last one representable

[[noreturn]] void refuse(const std::string& what) { throw std::invalid_argument(what); }

struct Nothing {};
void describe(Archive& /*archive*/, Nothing& /*arguments*/) {}

struct SetArguments {
  json state = json::object();
};
struct NvArguments {
  NvKey key;
  Bytes data;
  bool is_write = false;
};
struct IndicateArguments {
  IndicationBurst burst;
  uint32_t interval_ms = 0;
};
struct ServiceArguments {
  std::string name;
  bool up = true;
};
struct InstancesArguments {
  uint32_t count = 0;  // 0: no change
};
struct HobSaveArguments {
  uint32_t count = 1;
  uint32_t interval_ms = 0;
};

void describe(Archive& archive, SetArguments& arguments) {
  archive.require(archive.raw("state", arguments.state), "state");
}

void describe(Archive& archive, NvArguments& arguments) {
  archive.require(archive.number("rde_id", arguments.key.rde_id), "rde_id");
  archive.number("record", arguments.key.record);
  arguments.is_write = archive.hex("data", arguments.data, up_to(kMaxItemSize));
}

void describe(Archive& archive, IndicateArguments& arguments) {
  archive.require(archive.text("indication", arguments.burst.indication, up_to(kMaxName)),
                  "indication");
  archive.raw("fields", arguments.burst.fields);
  archive.number("count", arguments.burst.count, 0, kMaxBurst);
  archive.number("interval_ms", arguments.interval_ms, 0, kMaxIntervalMs);
  arguments.burst.interval = milliseconds(arguments.interval_ms);
}

void describe(Archive& archive, ServiceArguments& arguments) {
  archive.require(archive.text("name", arguments.name, up_to(kMaxName)), "name");
  archive.require(archive.flag("up", arguments.up), "up");
}

void describe(Archive& archive, InstancesArguments& arguments) {
  archive.number("count", arguments.count, 1, kMaxInstances);
}

void describe(Archive& archive, HobSaveArguments& arguments) {
  archive.number("count", arguments.count, 1, kMaxBurst);
  archive.number("interval_ms", arguments.interval_ms);
}

json get_state(Simulator& simulator) {
  return {{"state", Archive::to_json(simulator.device.state)}};
}

// A wrong value leaves the whole state unchanged.
json set_state(Simulator& simulator, SetArguments& arguments) {
  State changed = simulator.device.state;
  Archive::from_json(arguments.state, "", changed);
  simulator.device.state = changed;
  return json::object();
}

json access_nv(Simulator& simulator, NvArguments& arguments) {
  NvStore& nv = simulator.device.state.nv;
  if (arguments.is_write) nv.put(arguments.key, arguments.data);
  const Bytes* item = nv.find(arguments.key);
  if (item == nullptr) {
    refuse(fmt::format("no NV item {}, record {}", arguments.key.rde_id, arguments.key.record));
  }
  return {{"rde_id", arguments.key.rde_id},
          {"record", arguments.key.record},
          {"data", qmi_json::to_hex(*item)}};
}

json send_indication(Simulator& simulator, IndicateArguments& arguments) {
  indicate(simulator.device.outbox, arguments.burst);
  return json::object();
}

json add_fault(Simulator& simulator, Fault& fault) {
  simulator.faults.add(fault);
  return json::object();
}

json list_faults(Simulator& simulator) {
  json list = json::array();
  for (Fault& fault : simulator.faults.all()) list.push_back(Archive::to_json(fault));
  return {{"faults", list}};
}

json clear_faults(Simulator& simulator) {
  simulator.faults.clear();
  return json::object();
}

json move_service(Simulator& simulator, ServiceArguments& arguments) {
  const qmi_idl::Service* service = find_service(arguments.name);
  if (service == nullptr) refuse("unknown service \"" + arguments.name + "\"");
  auto kind = arguments.up ? Action::Kind::publish : Action::Kind::withdraw;
  simulator.device.outbox.add({kind, service->id, 0, {}});
  return json::object();
}

json set_instances(Simulator& simulator, InstancesArguments& arguments) {
  if (arguments.count != 0) {
    simulator.instances = arguments.count;
    simulator.device.outbox.add({Action::Kind::resize, qorext_service().id, 0, {}});
  }
  return {{"count", simulator.instances}};
}

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

json request_save(Simulator& simulator, HobSaveArguments& arguments) {
  indicate(simulator.device.outbox, {.indication = "hob_save",
                                     .fields = json::object(),
                                     .count = arguments.count,
                                     .interval = milliseconds(arguments.interval_ms)});
  return {{"answers", simulator.device.hob_answers}};
}

json list_requests(Simulator& simulator) { return {{"requests", simulator.requests.all()}}; }

json clear_requests(Simulator& simulator) {
  simulator.requests.clear();
  return json::object();
}

json get_version(Simulator& /*simulator*/) { return {{"version", kVersion}}; }

// Control acts on these.
json accept(Simulator& /*simulator*/) { return json::object(); }

template <typename Arguments, json (*act)(Simulator&, Arguments&)>
json run_with(Simulator& simulator, const json& given) {
  Arguments arguments;
  Archive::from_json(given, "", arguments);
  return act(simulator, arguments);
}

template <json (*act)(Simulator&)>
json run_plain(Simulator& simulator, const json& given) {
  Nothing none;
  Archive::from_json(given, "", none);
  return act(simulator);
}

struct CommandRow {
  const char* name;
  json (*run)(Simulator& simulator, const json& arguments);
};

constexpr CommandRow kCommands[] = {
    {"state", run_plain<get_state>},
    {"set", run_with<SetArguments, set_state>},
    {"nv", run_with<NvArguments, access_nv>},
    {"indicate", run_with<IndicateArguments, send_indication>},
    {"kpi", run_with<UploadOptions, start_upload>},
    {"uploads", run_plain<list_uploads>},
    {"kpi_packet", run_with<KpiPacketOptions, send_kpi_packet>},
    {"hob_save", run_with<HobSaveArguments, request_save>},
    {"hob", run_plain<list_hob_states>},
    {"fault", run_with<Fault, add_fault>},
    {"faults", run_plain<list_faults>},
    {"clear_faults", run_plain<clear_faults>},
    {"service", run_with<ServiceArguments, move_service>},
    {"instances", run_with<InstancesArguments, set_instances>},
    {"requests", run_plain<list_requests>},
    {"clear_requests", run_plain<clear_requests>},
    {"version", run_plain<get_version>},
    {kWatch, run_plain<accept>},
    {kQuit, run_plain<accept>},
};

const CommandRow& find_command(const std::string& name) {
  const auto* row =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&name](const CommandRow& command) { return name == command.name; });
  if (row == std::end(kCommands)) refuse("unknown command \"" + name + "\"");
  return *row;
}

}  // namespace

json run_command(Simulator& simulator, const std::string& name, const json& arguments) {
  return find_command(name).run(simulator, arguments);
}

}  // namespace modem
