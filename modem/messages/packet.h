// SPDX-License-Identifier: Apache-2.0
// Whole QMI packets: a header and TLVs.
#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>

#include "platform/linux/qmi_idl/codec.h"
#include "platform/linux/qmi_json/hex.h"

namespace modem {

using qmi_json::Bytes;

// Of indications, which answer no request.
constexpr uint16_t kNoTransaction = 0;

Bytes make_packet(qmi_idl::WireType type, uint16_t transaction, uint32_t message_id,
                  std::span<const uint8_t> tlvs);

// Throws FieldError when the structure cannot be encoded.
Bytes encode_packet(qmi_idl::WireType type, uint16_t transaction, const qmi_idl::Message& message,
                    std::span<const uint8_t> structure);

// A response with only the result TLV, which every client decodes.
Bytes result_packet(uint16_t transaction, uint32_t message_id, uint16_t result, uint16_t error);

qmi_idl::Direction direction_of(qmi_idl::WireType type);
// "request", "response", "indication".
const char* direction_text(qmi_idl::Direction direction);

// The fields by name; null when the TLVs cannot be decoded.
nlohmann::json fields_of(const qmi_idl::Service& service, const qmi_idl::Header& header,
                         std::span<const uint8_t> tlvs);

// One line for a person: service, message, direction, fields.
std::string packet_text(const qmi_idl::Service& service, std::span<const uint8_t> packet);

}  // namespace modem
