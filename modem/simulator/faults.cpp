// SPDX-License-Identifier: Apache-2.0
#include "modem/simulator/faults.h"

#include <algorithm>
#include <iterator>

#include "modem/messages/services.h"

namespace modem {
namespace {

constexpr size_t kTlvLengthOffset = qmi_idl::kHeaderSize + 1;
constexpr size_t kFirstTlvEnd = qmi_idl::kHeaderSize + 3;
constexpr uint16_t kTransactionFlip = 0x5555;

struct Injection {
  const Fault& fault;
  Exchange& exchange;
  Outbox& outbox;
  std::minstd_rand& random;

  std::span<const uint8_t> tlvs() const {
    return std::span<const uint8_t>(exchange.response).subspan(qmi_idl::kHeaderSize);
  }
  void answer(Bytes packet) const {
    outbox.add({Action::Kind::send, exchange.service.id, exchange.peer, std::move(packet)},
               milliseconds(fault.delay_ms));
  }
  void answer_with(uint16_t transaction, std::span<const uint8_t> tlvs) const {
    answer(make_packet(qmi_idl::WireType::response, transaction, exchange.header.message_id, tlvs));
  }
};

void stay_silent(const Injection& /*injection*/) {}

void answer_late(const Injection& injection) { injection.answer(injection.exchange.response); }

void answer_error(const Injection& injection) {
  injection.answer(refuse(injection.exchange.service, injection.exchange.header,
                          injection.fault.result, injection.fault.error));
}

void answer_truncated(const Injection& injection) {
  auto tlvs = injection.tlvs();
  injection.answer_with(injection.exchange.header.transaction,
                        tlvs.first(std::min<size_t>(injection.fault.bytes, tlvs.size())));
}

void answer_malformed(const Injection& injection) {
  Bytes packet = injection.exchange.response;
  if (packet.size() >= kFirstTlvEnd) {
    packet[kTlvLengthOffset] = 0xFF;
    packet[kTlvLengthOffset + 1] = 0xFF;
  }
  injection.answer(std::move(packet));
}

void answer_random_bytes(const Injection& injection) {
  Bytes bytes(injection.tlvs().size());
  std::uniform_int_distribution<int> byte(0, UINT8_MAX);
  std::generate(bytes.begin(), bytes.end(),
                [&] { return static_cast<uint8_t>(byte(injection.random)); });
  injection.answer_with(injection.exchange.header.transaction, bytes);
}

void answer_wrong_transaction(const Injection& injection) {
  auto wrong = static_cast<uint16_t>(injection.exchange.header.transaction ^ kTransactionFlip);
  injection.answer_with(wrong, injection.tlvs());
}

void answer_after_a_stray(const Injection& injection) {
  answer_wrong_transaction(injection);
  injection.answer(injection.exchange.response);
}

void answer_twice(const Injection& injection) {
  injection.answer(injection.exchange.response);
  injection.answer(injection.exchange.response);
}

void drop_service(const Injection& injection) {
  uint32_t service = injection.exchange.service.id;
  milliseconds delay(injection.fault.delay_ms);
  injection.outbox.add({Action::Kind::withdraw, service, 0, {}}, delay);
  injection.outbox.add({Action::Kind::publish, service, 0, {}}, delay);
}

struct KindRow {
  const char* name;
  bool serves_request;
  void (*inject)(const Injection& injection);
};

constexpr KindRow kKinds[] = {
    {"silent", false, stay_silent},
    {"delay", true, answer_late},
    {"error", false, answer_error},
    {"truncated", true, answer_truncated},
    {"malformed", true, answer_malformed},
    {"garbage", true, answer_random_bytes},
    {"transaction", true, answer_wrong_transaction},
    {"stray", true, answer_after_a_stray},
    {"duplicate", true, answer_twice},
    {"close", false, drop_service},
};

constexpr bool has_row_of_each_kind() {
  return std::equal(std::begin(kKinds), std::end(kKinds), std::begin(kFaultKinds),
                    std::end(kFaultKinds),
                    [](const KindRow& row, std::string_view kind) { return row.name == kind; });
}
static_assert(has_row_of_each_kind());

const KindRow* find_kind(const std::string& name) {
  const auto* row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                 [&name](const KindRow& kind) { return name == kind.name; });
  return row == std::end(kKinds) ? nullptr : row;
}

}  // namespace

bool serves_request(const Fault& fault) { return find_kind(fault.kind)->serves_request; }

std::optional<Fault> Faults::take(const qmi_idl::Service& service, uint32_t message_id) {
  std::string message = message_name(service, qmi_idl::Direction::request, message_id);
  auto found = std::find_if(faults_.begin(), faults_.end(), [&](const Fault& fault) {
    return (fault.service == "any" || fault.service == service.name) &&
           (fault.message == "any" || fault.message == message);
  });
  if (found == faults_.end()) return std::nullopt;

  Fault fault = *found;
  bool is_last = found->times == 1;
  if (found->times > 0) --found->times;
  if (is_last) faults_.erase(found);
  return fault;
}

void Faults::apply(const Fault& fault, Exchange exchange, Outbox& outbox) {
  find_kind(fault.kind)->inject({fault, exchange, outbox, random_});
}

}  // namespace modem
