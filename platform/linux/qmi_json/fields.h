// SPDX-License-Identifier: Apache-2.0
// A message's C structure, read and filled by the names of its elements.
//
// An unknown name or a value of another kind is a mistake of the caller's and throws FieldError,
// and so does a value that the element cannot hold.
#pragma once

#include <stdint.h>

#include <span>
#include <stdexcept>
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

// Bytes (counted or not), as opposed to numbers.
bool is_bytes(const qmi_idl::Shape& shape);

// The numbers that an element can carry: what the wire has room for, as the structure's numbers may
// be wider.
struct Range {
  int64_t low;
  int64_t high;

  bool holds(int64_t value) const { return value >= low && value <= high; }
};
Range range_of(const qmi_idl::Shape& shape);

// Where a name stands several times in a message (the entries of a list, one TLV an entry), `index`
// tells which one is meant.
class Fields {
 public:
  // `structure` has exactly message.size bytes and outlives the object.
  Fields(const qmi_idl::Message& message, std::span<uint8_t> structure);

  const qmi_idl::Message& message() const { return message_; }

  bool knows(std::string_view name) const;

  uint32_t number(std::string_view name, size_t index = 0) const;
  Bytes bytes(std::string_view name, size_t index = 0) const;
  std::vector<int64_t> numbers(std::string_view name, size_t index = 0) const;

  // Each marks an optional TLV as present. Bytes fewer than an uncounted element holds are filled
  // up with zeros.
  void set(std::string_view name, int64_t value, size_t index = 0);
  void set(std::string_view name, std::span<const uint8_t> value, size_t index = 0);
  void set(std::string_view name, std::span<const int64_t> values, size_t index = 0);
  void set_text(std::string_view name, std::string_view value, size_t index = 0);

  // Sets the result record, when the message has one.
  void set_result(uint32_t result, uint32_t error);

  // The same by element, for walking through message().elements. A mandatory element is always
  // present.
  bool is_present(const qmi_idl::Element& element) const;
  void mark_present(const qmi_idl::Element& element);
  std::vector<int64_t> load(const qmi_idl::Element& element) const;
  void store(const qmi_idl::Element& element, std::span<const int64_t> values);

 private:
  const qmi_idl::Element& find(std::string_view name, size_t index) const;
  [[noreturn]] void fail(const qmi_idl::Element& element, const char* what) const;

  const qmi_idl::Message& message_;
  std::span<uint8_t> structure_;
};

}  // namespace qmi_json
