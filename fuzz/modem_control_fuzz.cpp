// The simulated modem's two inputs: lines of its control socket and packets of its clients.
#include <fuzzer/FuzzedDataProvider.h>

#include "control.h"
#include "factory.h"
#include "require.h"
#include "services.h"

namespace {

using nlohmann::json;

constexpr size_t kMostSteps = 20;
constexpr size_t kMostLine = 4096;
constexpr size_t kMostPacket = 1024;
constexpr size_t kMostActions = 50;
constexpr uint64_t kPeer = 1;
constexpr auto kMuchLater = std::chrono::hours(24 * 365);

json ask(modem::Control& control, const std::string& line) {
  std::string answer = control.answer(line);
  FUZZ_REQUIRE(answer.find('\n') == std::string::npos);
  json parsed = json::parse(answer);
  FUZZ_REQUIRE(parsed.is_object() && parsed["ok"].is_boolean());
  FUZZ_REQUIRE(parsed["ok"] || parsed["error"].is_string());
  return parsed;
}

json state_of(modem::Control& control) { return ask(control, R"({"command":"state"})")["state"]; }

// What the state says of itself is a state that can be set, and a refused command changes nothing.
void check_line(modem::Control& control, const std::string& line) {
  json before = state_of(control);
  json answer = ask(control, line);
  json after = state_of(control);
  FUZZ_REQUIRE(answer["ok"] || after == before);

  json set = {{"command", "set"}, {"state", after}};
  FUZZ_REQUIRE(ask(control, set.dump(-1, ' ', true, json::error_handler_t::replace))["ok"]);
  FUZZ_REQUIRE(state_of(control) == after);
}

void send_packet(FuzzedDataProvider& input, modem::Simulator& simulator) {
  auto services = modem::services();
  auto index = input.ConsumeIntegralInRange<size_t>(0, services.size() - 1);
  auto tlvs = input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, kMostPacket));
  auto id = input.ConsumeIntegralInRange<uint16_t>(0, 0x120);
  modem::Bytes packet = modem::make_packet(qmi_idl::WireType::request, 1, id, tlvs);
  if (input.ConsumeBool()) packet = tlvs;
  simulator.receive(*services[index], kPeer, packet);
}

void take_actions(modem::Outbox& outbox) {
  for (size_t i = 0; i < kMostActions; ++i) {
    if (!outbox.take_due(modem::Clock::now() + kMuchLater)) return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  modem::Simulator simulator(modem::factory_state(), 1);
  modem::Control control(simulator);
  for (size_t i = 0; i < kMostSteps && input.remaining_bytes() > 0; ++i) {
    if (input.ConsumeBool()) {
      send_packet(input, simulator);
    } else {
      check_line(control, input.ConsumeRandomLengthString(kMostLine));
    }
    take_actions(simulator.device.outbox);
  }
  return 0;
}
