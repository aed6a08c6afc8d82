// SPDX-License-Identifier: Apache-2.0
// Converts a message's C structure to JSON and back, by the names of its elements: numbers, bytes
// as a string of hexadecimal digits, text as a string, arrays as lists, the result record as
// {"result":0,"error":0}. A name that several elements have is a list in their order. Absent TLVs
// are omitted.
#pragma once

#include <nlohmann/json.hpp>

#include "platform/linux/qmi_json/fields.h"

namespace qmi_json {

nlohmann::json to_json(const qmi_idl::Message& message, std::span<const uint8_t> structure);

// Zeroes the structure, which has message.size bytes, and sets the elements in `fields`, an object
// or null. Bytes may be hexadecimal digits or a list of numbers. Throws FieldError with the names
// of message and element for an unknown name, a wrong type or a value out of range.
void from_json(const qmi_idl::Message& message, const nlohmann::json& fields,
               std::span<uint8_t> structure);

}  // namespace qmi_json
