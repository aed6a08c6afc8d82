// SPDX-License-Identifier: Apache-2.0
// A message's C structure as JSON and back, by the names of its elements: numbers as numbers, bytes
// as hexadecimal text, text as text, arrays as lists, the result record as {"result":0,"error":0}.
// A name that stands several times in a message is a list in the order of its elements. The TLVs
// that are not there are left out.
#pragma once

#include <nlohmann/json.hpp>

#include "platform/linux/qmi_json/fields.h"

namespace qmi_json {

nlohmann::json to_json(const qmi_idl::Message& message, std::span<const uint8_t> structure);

// Zeroes the structure (of exactly message.size bytes) and fills in what `fields`, an object or
// null, names; what it does not name stays zero or absent. Bytes are taken as hexadecimal text or
// as a list of numbers. Throws FieldError on an unknown name, a wrong type or a value out of range,
// with a text that names message and element.
void from_json(const qmi_idl::Message& message, const nlohmann::json& fields,
               std::span<uint8_t> structure);

}  // namespace qmi_json
