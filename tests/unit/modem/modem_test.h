// SPDX-License-Identifier: Apache-2.0
// A modem without sockets, asked by names.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "modem/messages/services.h"
#include "modem/simulator/simulator.h"
#include "modem/state/state.h"
#include "platform/linux/qmi_json/json_fields.h"

class ModemTest : public ::testing::Test {
 protected:
  using json = nlohmann::json;
  using Bytes = modem::Bytes;
  using Action = modem::Action;

  static constexpr uint16_t kTransaction = 0x1234;
  static constexpr uint64_t kPeer = 7;
  static constexpr auto kMuchLater = std::chrono::hours(1);

  static Bytes request_packet(const qmi_idl::Service& service, const char* name,
                              const json& fields = {}) {
    const auto* message = qmi_json::find_by_name(service, qmi_idl::Direction::request, name);
    if (message == nullptr) throw std::invalid_argument(name);
    Bytes structure(message->size);
    qmi_json::from_json(*message, fields, structure);
    return modem::encode_packet(qmi_idl::WireType::request, kTransaction, *message, structure);
  }

  // What is due within `patience`, each action once.
  std::vector<Action> actions(modem::Clock::duration patience = std::chrono::seconds(0)) {
    std::vector<Action> due;
    while (auto action = simulator.device.outbox.take_due(modem::Clock::now() + patience)) {
      due.push_back(*action);
    }
    return due;
  }

  // The one packet that answers at once.
  Bytes exchange(const qmi_idl::Service& service, const Bytes& packet) {
    // What comes later than this is no answer, however long this test is kept waiting.
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
    Bytes packet = exchange(service, request_packet(service, name, fields));
    return fields_of(service, packet);
  }
  json ask_qorext(const char* name, const json& fields = {}) {
    return ask(modem::qorext_service(), name, fields);
  }

  static json fields_of(const qmi_idl::Service& service, const Bytes& packet) {
    auto header = qmi_idl::load_header(packet);
    if (!header) return "not a packet";
    return modem::fields_of(service, *header,
                            std::span<const uint8_t>(packet).subspan(qmi_idl::kHeaderSize));
  }

  static json result(int code, int error) { return {{"result", code}, {"error", error}}; }
  static json success() { return result(0, 0); }

  modem::State& state() { return simulator.device.state; }

  modem::Simulator simulator{modem::factory_state(), 1};
};
