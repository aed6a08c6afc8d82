// SPDX-License-Identifier: Apache-2.0
// QMI messages between the daemon and the modem.
#pragma once

#include "tests/unit/qorextctl/frame_samples.h"

namespace qorextctl {

// NV items: the second one is personal.
constexpr uint32_t kMobPRev = 28;
constexpr uint32_t kMin1 = 25;

constexpr uint8_t kQmiRequest = 0;
constexpr uint8_t kQmiResponse = 2;
constexpr uint8_t kQmiIndication = 4;

inline Bytes qmi(uint8_t type, uint16_t transaction, uint16_t id, const Bytes& tlvs) {
  Bytes packet{type};
  append_le(packet, transaction, 2);
  append_le(packet, id, 2);
  append_le(packet, static_cast<uint32_t>(tlvs.size()), 2);
  packet.insert(packet.end(), tlvs.begin(), tlvs.end());
  return packet;
}

inline void append_tlv(Bytes& tlvs, uint8_t type, const Bytes& value) {
  tlvs.push_back(type);
  append_le(tlvs, static_cast<uint32_t>(value.size()), 2);
  tlvs.insert(tlvs.end(), value.begin(), value.end());
}

// Item, record, offset and length.
inline Bytes element_address(uint32_t item, uint32_t length) {
  Bytes address;
  for (uint32_t word : {item, 0U, 0U, length}) append_le(address, word, 4);
  return address;
}

inline Bytes element_data(const Bytes& data) {
  Bytes counted;
  append_le(counted, static_cast<uint32_t>(data.size()), 2);
  counted.insert(counted.end(), data.begin(), data.end());
  return counted;
}

inline Bytes read_request(uint16_t transaction, uint32_t item) {
  Bytes tlvs;
  append_tlv(tlvs, 0x01, element_address(item, 0));
  append_tlv(tlvs, 0x02, element_data({}));
  return qmi(kQmiRequest, transaction, 0x08, tlvs);
}

inline Bytes read_response(uint16_t transaction, uint32_t item, const Bytes& data) {
  Bytes tlvs;
  append_tlv(tlvs, 0x02, {0, 0, 0, 0});
  append_tlv(tlvs, 0x01, element_address(item, static_cast<uint32_t>(data.size())));
  append_tlv(tlvs, 0x03, element_data(data));
  return qmi(kQmiResponse, transaction, 0x08, tlvs);
}

// The two codes are consecutive.
inline Bytes write_spc_request(uint16_t transaction, const std::string& current,
                               const std::string& next) {
  Bytes tlvs;
  append_tlv(tlvs, 0x01, {current.begin(), current.end()});
  append_tlv(tlvs, 0x02, {next.begin(), next.end()});
  return qmi(kQmiRequest, transaction, 0x52, tlvs);
}

// 1 when the block is saved, 0xFF when the daemon is ready to save it.
inline Bytes hob_request(uint16_t transaction, uint8_t state) {
  return qmi(kQmiRequest, transaction, 0x13, {0x01, 1, 0, state});
}

}  // namespace qorextctl
