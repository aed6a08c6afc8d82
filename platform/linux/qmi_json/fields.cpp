// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_json/fields.h"

#include <algorithm>
#include <string>

#include "platform/linux/qmi_idl/codec.h"

namespace qmi_json {
namespace {

using qmi_idl::Element;
using qmi_idl::Kind;
using qmi_idl::Shape;

// Bounded, because a structure from outside may state any count.
size_t stored_count(const Shape& shape, const uint8_t* structure) {
  return std::min<size_t>(qmi_idl::count_in(shape, structure), shape.capacity);
}

}  // namespace

const qmi_idl::Message* find_by_name(const qmi_idl::Service& service, qmi_idl::Direction direction,
                                     std::string_view name) {
  for (const qmi_idl::Message& message : service.messages) {
    if (message.direction == direction && name == message.name) return &message;
  }
  return nullptr;
}

bool is_bytes(const Shape& shape) {
  return shape.kind == Kind::bytes ||
         (shape.kind == Kind::array && shape.wire == 1 && !shape.is_signed);
}

Range range_of(const Shape& shape) {
  int64_t span = int64_t{1} << (8 * shape.wire);
  int64_t low = shape.is_signed ? -span / 2 : 0;
  return {low, low + span - 1};
}

std::string out_of_range(const std::string& value, const Range& range) {
  return value + " is out of range (" + std::to_string(range.low) + " to " +
         std::to_string(range.high) + ")";
}

std::string too_many(size_t count, size_t limit) {
  return std::to_string(count) + " values, expected at most " + std::to_string(limit);
}

Fields::Fields(const qmi_idl::Message& message, std::span<uint8_t> structure)
    : message_(message), structure_(structure) {
  if (structure.size() != message.size) throw FieldError("wrong structure size");
}

const Element& Fields::find(std::string_view name, size_t index) const {
  for (const Element& element : message_.elements) {
    if (name == element.name && index-- == 0) return element;
  }
  throw FieldError(std::string(message_.name) + ": unknown field \"" + std::string(name) + "\"");
}

void Fields::fail(const Element& element, const std::string& what) const {
  throw FieldError(std::string(message_.name) + ": field \"" + element.name + "\": " + what);
}

bool Fields::knows(std::string_view name) const {
  return std::any_of(message_.elements.begin(), message_.elements.end(),
                     [name](const Element& element) { return name == element.name; });
}

uint32_t Fields::number(std::string_view name, size_t index) const {
  const Element& element = find(name, index);
  if (element.shape.kind != Kind::integer) fail(element, "not a number");
  return static_cast<uint32_t>(load(element)[0]);
}

Bytes Fields::bytes(std::string_view name, size_t index) const {
  const Element& element = find(name, index);
  if (!is_bytes(element.shape)) fail(element, "not bytes");
  const uint8_t* start = structure_.data() + element.shape.offset;
  return {start, start + stored_count(element.shape, structure_.data())};
}

std::vector<int64_t> Fields::numbers(std::string_view name, size_t index) const {
  return load(find(name, index));
}

void Fields::set(std::string_view name, int64_t value, size_t index) {
  const Element& element = find(name, index);
  if (element.shape.kind != Kind::integer) fail(element, "not a number");
  store(element, {&value, 1});
}

void Fields::set(std::string_view name, std::span<const uint8_t> value, size_t index) {
  const Element& element = find(name, index);
  if (!is_bytes(element.shape)) fail(element, "not bytes");
  store(element, std::vector<int64_t>(value.begin(), value.end()));
}

void Fields::set(std::string_view name, std::span<const int64_t> values, size_t index) {
  store(find(name, index), values);
}

void Fields::set_text(std::string_view name, std::string_view value, size_t index) {
  const Element& element = find(name, index);
  if (element.shape.kind != Kind::text) fail(element, "not a string");
  auto octets = reinterpret_cast<const uint8_t*>(value.data());
  store(element, std::vector<int64_t>(octets, octets + value.size()));
}

void Fields::set_result(uint32_t result, uint32_t error) {
  int64_t values[] = {result, error};
  for (const Element& element : message_.elements) {
    if (element.shape.kind == Kind::result) store(element, values);
  }
}

bool Fields::is_present(const Element& element) const {
  return element.valid_offset == qmi_idl::kNoOffset || structure_[element.valid_offset] != 0;
}

void Fields::mark_present(const Element& element) {
  if (element.valid_offset != qmi_idl::kNoOffset) structure_[element.valid_offset] = 1;
}

std::vector<int64_t> Fields::load(const Element& element) const {
  const Shape& shape = element.shape;
  std::vector<int64_t> values(stored_count(shape, structure_.data()));
  const uint8_t* from = structure_.data() + shape.offset;
  for (int64_t& value : values) {
    uint64_t stored = qmi_idl::load_number(from, shape.memory);
    if (shape.is_signed) stored = qmi_idl::sign_extend(stored, shape.memory);
    value = static_cast<int64_t>(stored);
    from += shape.memory;
  }
  return values;
}

void Fields::store(const Element& element, std::span<const int64_t> values) {
  const Shape& shape = element.shape;
  if (values.size() > shape.capacity) {
    fail(element, too_many(values.size(), shape.capacity));
  }
  Range range = range_of(shape);
  for (int64_t value : values) {
    if (!range.holds(value)) fail(element, out_of_range(std::to_string(value), range));
  }

  uint8_t* to = structure_.data() + shape.offset;
  std::fill(to, structure_.data() + end_of(shape), uint8_t{0});
  for (int64_t value : values) {
    qmi_idl::store_number(to, shape.memory, static_cast<uint64_t>(value));
    to += shape.memory;
  }
  if (shape.kind == Kind::array) {
    qmi_idl::store_number(structure_.data() + shape.count_offset, shape.count_memory,
                          values.size());
  }
  mark_present(element);
}

}  // namespace qmi_json
