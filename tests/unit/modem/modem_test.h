// SPDX-License-Identifier: Apache-2.0
// A modem without sockets; requests and fields are given by name.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "modem/control/control.h"
#include "modem/simulator/simulator.h"
#include "modem/state/state.h"
#include "tests/unit/modem/modem_clients.h"

class ModemTest : public ::testing::Test {
 protected:
  using Action = modem::Action;

  static constexpr uint64_t kPeer = 7;
  static constexpr auto kMuchLater = std::chrono::hours(1);

  // Takes the actions that are due within `time`.
  std::vector<Action> actions(modem::Clock::duration time = std::chrono::seconds(0)) {
    std::vector<Action> due;
    while (auto action = simulator.device.outbox.take_due(modem::Clock::now() + time)) {
      due.push_back(*action);
    }
    return due;
  }

  // The one packet that answers at once.
  Bytes exchange(const qmi_idl::Service& service, const Bytes& packet) {
    // A later action is not an answer, even if the test is delayed.
    auto later = modem::Clock::now() + std::chrono::milliseconds(10);
    simulator.receive(service, kPeer, packet);
    auto& outbox = simulator.device.outbox;
    auto answer = outbox.take_due(modem::Clock::now());
    if (!answer) {
      ADD_FAILURE() << "no answer";
      return {};
    }
    EXPECT_EQ(answer->kind, Action::Kind::send);
    EXPECT_EQ(answer->peer, kPeer);
    EXPECT_GE(outbox.next_due().value_or(later), later) << "a second answer";
    return answer->packet;
  }

  // The fields of the answer; null when it does not decode.
  json ask(const qmi_idl::Service& service, const char* name, const json& fields = {}) {
    return fields_of(service, exchange(service, request_packet(service, name, fields)));
  }
  json ask_qorext(const char* name, const json& fields = {}) {
    return ask(modem::qorext_service(), name, fields);
  }

  static json result(int code, int error) { return {{"result", code}, {"error", error}}; }
  static json success() { return result(0, 0); }

  modem::State& state() { return simulator.device.state; }

  modem::Simulator simulator{modem::factory_state(), 1};
};

// The same with the commands of the control socket.
class ControlTest : public ModemTest {
 protected:
  json line(const std::string& text) { return json::parse(control.answer(text)); }
  json command(const char* name, json arguments = json::object()) {
    arguments["command"] = name;
    return line(arguments.dump());
  }
  std::string error_of(const char* name, json arguments = json::object()) {
    json answer = command(name, std::move(arguments));
    EXPECT_EQ(answer["ok"], false);
    return answer["error"];
  }
  json faults() { return command("faults")["faults"]; }

  modem::Control control{simulator};
};
