// SPDX-License-Identifier: Apache-2.0
#include "modem/control/control.h"

#include <algorithm>
#include <iterator>

#include "modem/control/capture_commands.h"
#include "modem/control/version.h"
#include "modem/messages/indications.h"
#include "modem/messages/services.h"
#include "modem/state/archive.h"
#include "modem/state/state_keys.h"
#include "platform/linux/qmi_json/foreign_json.h"

namespace modem {
namespace {

using nlohmann::json;

constexpr uint32_t kMaxIntervalMs = 3600000;  // so that the last of a burst has a time of its own

struct CommandError : std::invalid_argument {
  using std::invalid_argument::invalid_argument;
};

// What the commands take.
struct Nothing {};
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
  uint32_t count = 0;  // as many as there are
};

void describe(Archive& /*archive*/, Nothing& /*arguments*/) {}

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

json get_state(Simulator& simulator, Nothing& /*arguments*/) {
  return {{"state", Archive::to_json(simulator.device.state)}};
}

// All or nothing: a wrong value leaves the state as it was.
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
  if (item == nullptr) throw CommandError("there is no such NV item");
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

json list_faults(Simulator& simulator, Nothing& /*arguments*/) {
  json list = json::array();
  for (Fault& fault : simulator.faults.all()) list.push_back(Archive::to_json(fault));
  return {{"faults", list}};
}

json clear_faults(Simulator& simulator, Nothing& /*arguments*/) {
  simulator.faults.clear();
  return json::object();
}

json move_service(Simulator& simulator, ServiceArguments& arguments) {
  const qmi_idl::Service* service = find_service(arguments.name);
  if (service == nullptr) throw CommandError("there is no service \"" + arguments.name + "\"");
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

json list_requests(Simulator& simulator, Nothing& /*arguments*/) {
  return {{"requests", simulator.requests.all()}};
}

json clear_requests(Simulator& simulator, Nothing& /*arguments*/) {
  simulator.requests.clear();
  return json::object();
}

json tell_version(Simulator& /*simulator*/, Nothing& /*arguments*/) {
  return {{"version", kVersion}};
}

// The control channel does the rest.
json agree(Simulator& /*simulator*/, Nothing& /*arguments*/) { return json::object(); }

template <json (*act)(Simulator&)>
json run_alone(Simulator& simulator, Nothing& /*arguments*/) {
  return act(simulator);
}

template <typename Arguments, json (*act)(Simulator&, Arguments&)>
json run_with(Simulator& simulator, const json& given) {
  Arguments arguments;
  Archive::from_json(given, "", arguments);
  return act(simulator, arguments);
}

struct CommandRow {
  const char* name;
  json (*run)(Simulator& simulator, const json& arguments);
};

constexpr const char* kWatch = "watch";
constexpr const char* kQuit = "quit";

constexpr CommandRow kCommands[] = {
    {"state", run_with<Nothing, get_state>},
    {"set", run_with<SetArguments, set_state>},
    {"nv", run_with<NvArguments, access_nv>},
    {"indicate", run_with<IndicateArguments, send_indication>},
    {"kpi", run_with<UploadOptions, start_upload>},
    {"uploads", run_with<Nothing, run_alone<list_uploads>>},
    {"kpi_packet", run_with<KpiPacketOptions, send_kpi_packet>},
    {"hob_save", run_with<HobSaveArguments, ask_for_save>},
    {"hob", run_with<Nothing, run_alone<list_hob_states>>},
    {"fault", run_with<Fault, add_fault>},
    {"faults", run_with<Nothing, list_faults>},
    {"clear_faults", run_with<Nothing, clear_faults>},
    {"service", run_with<ServiceArguments, move_service>},
    {"instances", run_with<InstancesArguments, set_instances>},
    {"requests", run_with<Nothing, list_requests>},
    {"clear_requests", run_with<Nothing, clear_requests>},
    {"version", run_with<Nothing, tell_version>},
    {kWatch, run_with<Nothing, agree>},
    {kQuit, run_with<Nothing, agree>},
};

const CommandRow& find_command(const std::string& name) {
  const auto* row =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&name](const CommandRow& command) { return name == command.name; });
  if (row == std::end(kCommands)) throw CommandError("there is no command \"" + name + "\"");
  return *row;
}

json parse_line(const std::string& line) {
  auto parsed = qmi_json::parse_foreign<json>(line);
  if (parsed.excess != nullptr) throw CommandError(std::string("the line ") + parsed.excess);
  if (parsed.value.is_discarded()) throw CommandError("the line is not JSON");
  return std::move(parsed.value);
}

std::string take_name(json& given) {
  if (!given.is_object() || !given.contains("command") || !given["command"].is_string()) {
    throw CommandError("a line is an object with a \"command\"");
  }
  std::string name = given["command"];
  given.erase("command");
  return name;
}

json failure(const std::string& what) { return {{"ok", false}, {"error", what}}; }

}  // namespace

json Control::run(const std::string& line) {
  watch_wanted_ = false;
  try {
    json given = parse_line(line);
    std::string name = take_name(given);
    json answer = find_command(name).run(simulator_, given);
    answer["ok"] = true;
    quit_wanted_ = quit_wanted_ || name == kQuit;
    watch_wanted_ = name == kWatch;
    return answer;
  } catch (const ArchiveError& error) {
    return failure(error.describe());
  } catch (const std::exception& error) {
    return failure(error.what());
  }
}

std::string Control::answer(const std::string& line) {
  return run(line).dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace modem
