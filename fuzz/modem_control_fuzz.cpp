// SPDX-License-Identifier: Apache-2.0
// The simulated modem's two inputs: lines of its control socket and packets of its clients.
#include "fuzz/support.h"
#include "modem/control/control.h"
#include "modem/messages/services.h"
#include "modem/state/archive.h"
#include "modem/state/state.h"
#include "modem/state/state_keys.h"

namespace {

using nlohmann::json;

constexpr size_t kMaxSteps = 20;
constexpr int kStateChecks = 63;  // checked for one input in this number, because it is slow
constexpr size_t kMaxLine = 200'000;
constexpr size_t kMaxStretched = 500'000;
constexpr size_t kMaxPacket = 1024;
constexpr size_t kMaxActions = 50;
constexpr uint64_t kPeer = 1;
constexpr auto kMuchLater = std::chrono::hours(24 * 365);

json send(modem::Control& control, const std::string& line) {
  std::string answer = control.answer(line);
  FUZZ_REQUIRE(answer.find('\n') == std::string::npos);
  json parsed = json::parse(answer);
  FUZZ_REQUIRE(parsed.is_object() && parsed["ok"].is_boolean());
  FUZZ_REQUIRE(parsed["ok"] || parsed["error"].is_string());
  return parsed;
}

json state_of(modem::Simulator& simulator) {
  return modem::Archive::to_json(simulator.device.state);
}

// A refused command changes nothing. Only "set" could, and reading the state is slow.
void check_line(modem::Control& control, modem::Simulator& simulator, const std::string& line) {
  bool may_change = line.find("set") != std::string::npos;
  json before = may_change ? state_of(simulator) : json();
  json answer = send(control, line);
  if (may_change && !answer["ok"]) FUZZ_REQUIRE(state_of(simulator) == before);
}

// The state that is reported can be set.
void check_state(modem::Control& control, modem::Simulator& simulator) {
  json state = state_of(simulator);
  json set = {{"command", "set"}, {"state", state}};
  FUZZ_REQUIRE(send(control, set.dump())["ok"]);
  FUZZ_REQUIRE(state_of(simulator) == state);
}

void send_packet(FuzzedDataProvider& input, modem::Simulator& simulator) {
  auto services = modem::services();
  auto index = input.ConsumeIntegralInRange<size_t>(0, services.size() - 1);
  auto tlvs = fuzz::consume_bytes(input, kMaxPacket);
  auto id = input.ConsumeIntegralInRange<uint16_t>(0, 0x120);
  modem::Bytes packet = modem::make_packet(qmi_idl::WireType::request, 1, id, tlvs);
  if (input.ConsumeBool()) packet = tlvs;
  simulator.receive(*services[index], kPeer, packet);
}

void take_actions(modem::Outbox& outbox) {
  for (size_t i = 0; i < kMaxActions; ++i) {
    if (!outbox.take_due(modem::Clock::now() + kMuchLater)) return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  static const modem::State factory = modem::factory_state();
  bool is_state_checked = input.ConsumeIntegralInRange(0, kStateChecks) == kStateChecks;
  modem::Simulator simulator(factory, 1);
  modem::Control control(simulator);
  for (size_t i = 0; i < kMaxSteps && input.remaining_bytes() > 0; ++i) {
    switch (input.ConsumeIntegralInRange(0, 4)) {
      case 3:
        send_packet(input, simulator);
        break;
      case 4:
        check_line(control, simulator, fuzz::consume_stretched(input, kMaxStretched));
        break;
      default:
        check_line(control, simulator, input.ConsumeRandomLengthString(kMaxLine));
    }
    take_actions(simulator.device.outbox);
  }
  if (is_state_checked) check_state(control, simulator);
  return 0;
}
