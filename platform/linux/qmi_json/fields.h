// SPDX-License-Identifier: Apache-2.0
// Reads and writes a message's C structure by the names of its elements.
//
// Throws FieldError for an unknown name, an element of another kind, or a value that the element
// cannot hold.
#pragma once

#include <stdint.h>

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/qmi_idl/descriptor.h"
#include "platform/linux/qmi_json/hex.h"

namespace qmi_json {

struct FieldError : std::invalid_argument {
  using std::invalid_argument::invalid_argument;
};

// The message with this name and direction, or null.
const qmi_idl::Message* find_by_name(const qmi_idl::Service& service, qmi_idl::Direction direction,
                                     std::string_view name);

// Whether the element is bytes, with or without a count, and not numbers.
bool is_bytes(const qmi_idl::Shape& shape);

// The numbers that an element can carry. The wire decides, as the structure's numbers may be wider.
struct Range {
  int64_t low;
  int64_t high;

  bool holds(int64_t value) const { return value >= low && value <= high; }
};
Range range_of(const qmi_idl::Shape& shape);

// Error messages: "300 is out of range (0 to 255)", "9 values, expected at most 8".
std::string out_of_range(const std::string& value, const Range& range);
std::string too_many(size_t count, size_t limit);

// For a name that several elements have (the entries of a list, each in its own TLV), `index`
// selects one of them.
class Fields {
 public:
  // `structure` has message.size bytes and must outlive the object.
  Fields(const qmi_idl::Message& message, std::span<uint8_t> structure);

  const qmi_idl::Message& message() const { return message_; }

  bool knows(std::string_view name) const;

  uint32_t number(std::string_view name, size_t index = 0) const;
  Bytes bytes(std::string_view name, size_t index = 0) const;
  std::vector<int64_t> numbers(std::string_view name, size_t index = 0) const;

  // These mark an optional TLV as present. Bytes without a count are padded with zeros.
  void set(std::string_view name, int64_t value, size_t index = 0);
  void set(std::string_view name, std::span<const uint8_t> value, size_t index = 0);
  void set(std::string_view name, std::span<const int64_t> values, size_t index = 0);
  void set_text(std::string_view name, std::string_view value, size_t index = 0);

  // Sets the result record. Does nothing when the message has none.
  void set_result(uint32_t result, uint32_t error);

  // The same by element, for iterating over message().elements. A mandatory element is always
  // present.
  bool is_present(const qmi_idl::Element& element) const;
  void mark_present(const qmi_idl::Element& element);
  std::vector<int64_t> load(const qmi_idl::Element& element) const;
  void store(const qmi_idl::Element& element, std::span<const int64_t> values);

 private:
  const qmi_idl::Element& find(std::string_view name, size_t index) const;
  [[noreturn]] void fail(const qmi_idl::Element& element, const std::string& what) const;

  const qmi_idl::Message& message_;
  std::span<uint8_t> structure_;
};

}  // namespace qmi_json
