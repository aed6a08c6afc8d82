// SPDX-License-Identifier: Apache-2.0
#include "modem/simulator/faults.h"

#include <algorithm>
#include <iterator>

#include "modem/messages/fault_kinds.h"
#include "modem/messages/services.h"

namespace modem {
namespace {

constexpr size_t kTlvLengthOffset = qmi_idl::kHeaderSize + 1;
constexpr size_t kFirstTlvEnd = qmi_idl::kHeaderSize + 3;
constexpr uint16_t kTransactionFlip = 0x5555;

struct Spoiling {
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

void stay_silent(const Spoiling& /*spoiling*/) {}

void answer_late(const Spoiling& spoiling) { spoiling.answer(spoiling.exchange.response); }

void answer_error(const Spoiling& spoiling) {
  spoiling.answer(refuse(spoiling.exchange.service, spoiling.exchange.header, spoiling.fault.result,
                         spoiling.fault.error));
}

void answer_truncated(const Spoiling& spoiling) {
  auto tlvs = spoiling.tlvs();
  spoiling.answer_with(spoiling.exchange.header.transaction,
                       tlvs.first(std::min<size_t>(spoiling.fault.bytes, tlvs.size())));
}

// The first TLV claims more bytes than there are.
void answer_malformed(const Spoiling& spoiling) {
  Bytes packet = spoiling.exchange.response;
  if (packet.size() >= kFirstTlvEnd) {
    packet[kTlvLengthOffset] = 0xFF;
    packet[kTlvLengthOffset + 1] = 0xFF;
  }
  spoiling.answer(std::move(packet));
}

void answer_garbage(const Spoiling& spoiling) {
  Bytes garbage(spoiling.tlvs().size());
  std::uniform_int_distribution<int> byte(0, UINT8_MAX);
  std::generate(garbage.begin(), garbage.end(),
                [&] { return static_cast<uint8_t>(byte(spoiling.random)); });
  spoiling.answer_with(spoiling.exchange.header.transaction, garbage);
}

void answer_wrong_transaction(const Spoiling& spoiling) {
  auto wrong = static_cast<uint16_t>(spoiling.exchange.header.transaction ^ kTransactionFlip);
  spoiling.answer_with(wrong, spoiling.tlvs());
}

void answer_after_a_stray(const Spoiling& spoiling) {
  answer_wrong_transaction(spoiling);
  spoiling.answer(spoiling.exchange.response);
}

void answer_twice(const Spoiling& spoiling) {
  spoiling.answer(spoiling.exchange.response);
  spoiling.answer(spoiling.exchange.response);
}

void drop_service(const Spoiling& spoiling) {
  uint32_t service = spoiling.exchange.service.id;
  milliseconds delay(spoiling.fault.delay_ms);
  spoiling.outbox.add({Action::Kind::withdraw, service, 0, {}}, delay);
  spoiling.outbox.add({Action::Kind::publish, service, 0, {}}, delay);
}

struct KindRow {
  const char* name;
  bool serves_request;
  void (*spoil)(const Spoiling& spoiling);
};

constexpr KindRow kKinds[] = {
    {"silent", false, stay_silent},
    {"delay", true, answer_late},
    {"error", false, answer_error},
    {"truncated", true, answer_truncated},
    {"malformed", true, answer_malformed},
    {"garbage", true, answer_garbage},
    {"transaction", true, answer_wrong_transaction},
    {"stray", true, answer_after_a_stray},
    {"duplicate", true, answer_twice},
    {"close", false, drop_service},
};

static_assert(std::size(kKinds) == std::size(kFaultKinds));

const KindRow* find_kind(const std::string& name) {
  const auto* row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                 [&name](const KindRow& kind) { return name == kind.name; });
  return row == std::end(kKinds) ? nullptr : row;
}

bool has_request(const qmi_idl::Service& service, const std::string& name) {
  return std::any_of(
      service.messages.begin(), service.messages.end(), [&name](const qmi_idl::Message& message) {
        return message.direction == qmi_idl::Direction::request && name == message.name;
      });
}

bool is_known_message(const Fault& fault) {
  if (fault.message == "any" || fault.message.starts_with("0x")) return true;
  return std::any_of(services().begin(), services().end(), [&](const qmi_idl::Service* service) {
    return (fault.service == "any" || fault.service == service->name) &&
           has_request(*service, fault.message);
  });
}

}  // namespace

void describe(Archive& archive, Fault& fault) {
  archive.text("service", fault.service, up_to(kMaxName));
  archive.text("message", fault.message, up_to(kMaxName));
  archive.require(archive.text("kind", fault.kind, up_to(kMaxName)), "kind");
  archive.number("times", fault.times);
  archive.number("delay_ms", fault.delay_ms);
  archive.number("result", fault.result);
  archive.number("error", fault.error);
  archive.number("bytes", fault.bytes);
  if (!archive.reading()) return;

  if (fault.service != "any" && find_service(fault.service) == nullptr) {
    archive.refuse("service", "there is no service \"" + fault.service + "\"");
  }
  if (!is_known_message(fault)) {
    archive.refuse("message", "there is no request \"" + fault.message + "\"");
  }
  if (find_kind(fault.kind) == nullptr) {
    archive.refuse("kind", "there is no kind of fault \"" + fault.kind + "\"");
  }
}

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
  find_kind(fault.kind)->spoil({fault, exchange, outbox, random_});
}

}  // namespace modem
