// SPDX-License-Identifier: Apache-2.0
// Whole QMI packets: a header and TLVs.
#pragma once

#include <span>

#include "platform/linux/qmi_idl/codec.h"
#include "platform/linux/qmi_json/hex.h"

namespace modem {

using qmi_json::Bytes;

// Indications answer nobody.
constexpr uint16_t kNoTransaction = 0;

Bytes make_packet(qmi_idl::WireType type, uint16_t transaction, uint32_t message_id,
                  std::span<const uint8_t> tlvs);

// Throws FieldError when the structure cannot be encoded.
Bytes encode_packet(qmi_idl::WireType type, uint16_t transaction, const qmi_idl::Message& message,
                    std::span<const uint8_t> structure);

// The answer that any client understands: nothing but a result TLV.
Bytes result_packet(uint16_t transaction, uint32_t message_id, uint16_t result, uint16_t error);

}  // namespace modem
