// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_json/json_fields.h"

#include <algorithm>
#include <string>

namespace qmi_json {
namespace {

using nlohmann::json;
using qmi_idl::Element;
using qmi_idl::Kind;
using qmi_idl::Message;
using qmi_idl::Shape;

size_t occurrences(const Message& message, std::string_view name) {
  return static_cast<size_t>(
      std::count_if(message.elements.begin(), message.elements.end(),
                    [name](const Element& element) { return name == element.name; }));
}

json value_of(const Fields& fields, const Element& element) {
  std::vector<int64_t> values = fields.load(element);
  if (is_bytes(element.shape)) return to_hex(Bytes(values.begin(), values.end()));
  switch (element.shape.kind) {
    case Kind::integer:
      return values[0];
    case Kind::text:
      return std::string(values.begin(), values.end());
    case Kind::result:
      return {{"result", values[0]}, {"error", values[1]}};
    default:
      return values;
  }
}

[[noreturn]] void fail(const Message& message, const std::string& name, const std::string& what) {
  throw FieldError(std::string(message.name) + ": field \"" + name + "\": " + what);
}

// Converts one element's value from JSON. Throws FieldError with the element's name.
class ElementReader {
 public:
  ElementReader(const Message& message, const Element& element)
      : message_(message), element_(element), shape_(element.shape) {}

  std::vector<int64_t> read(const json& value) const {
    std::vector<int64_t> values = parse(value);
    if (values.size() > shape_.capacity) {
      refuse(too_many(values.size(), shape_.capacity));
    }
    return values;
  }

 private:
  std::vector<int64_t> parse(const json& value) const {
    if (is_bytes(shape_) && value.is_string()) return parse_hex(value);
    switch (shape_.kind) {
      case Kind::integer:
        return {parse_number(value)};
      case Kind::text:
        return parse_text(value);
      case Kind::result:
        return parse_result(value);
      default:
        return parse_list(value);
    }
  }

  int64_t parse_number(const json& value) const {
    Range range = range_of(shape_);
    if (!value.is_number_integer()) {
      refuse("expected an integer from " + std::to_string(range.low) + " to " +
             std::to_string(range.high));
    }
    bool is_huge = value.is_number_unsigned() && value.get<uint64_t>() > INT64_MAX;
    if (is_huge || !range.holds(value.get<int64_t>())) refuse(out_of_range(value.dump(), range));
    return value.get<int64_t>();
  }

  std::vector<int64_t> parse_hex(const json& value) const {
    auto bytes = from_hex(value.get_ref<const std::string&>());
    if (!bytes) refuse("expected hexadecimal digits, two for each byte");
    return {bytes->begin(), bytes->end()};
  }

  std::vector<int64_t> parse_text(const json& value) const {
    if (!value.is_string()) refuse("expected a string");
    std::vector<int64_t> values;
    for (char character : value.get_ref<const std::string&>()) {
      values.push_back(static_cast<uint8_t>(character));
    }
    return values;
  }

  std::vector<int64_t> parse_list(const json& value) const {
    if (!value.is_array()) {
      refuse(is_bytes(shape_) ? "expected hexadecimal digits or a list of numbers"
                              : "expected a list of numbers");
    }
    std::vector<int64_t> values;
    for (const json& item : value) values.push_back(parse_number(item));
    return values;
  }

  std::vector<int64_t> parse_result(const json& value) const {
    if (!value.is_object() || !value.contains("result") || !value.contains("error") ||
        value.size() != 2) {
      refuse("expected {\"result\":...,\"error\":...}");
    }
    return {parse_number(value["result"]), parse_number(value["error"])};
  }

  [[noreturn]] void refuse(const std::string& what) const { fail(message_, element_.name, what); }

  const Message& message_;
  const Element& element_;
  const Shape& shape_;
};

void store_named(Fields& fields, const std::string& name, const json& value) {
  const Message& message = fields.message();
  size_t entries = occurrences(message, name);
  bool is_repeated = entries > 1;
  if (is_repeated && !value.is_array()) fail(message, name, "expected a list");
  if (is_repeated && value.size() > entries) fail(message, name, too_many(value.size(), entries));

  size_t index = 0;
  for (const Element& element : message.elements) {
    if (name != element.name) continue;
    if (is_repeated && index == value.size()) return;
    const json& own = is_repeated ? value[index++] : value;
    fields.store(element, ElementReader(message, element).read(own));
  }
}

}  // namespace

json to_json(const Message& message, std::span<const uint8_t> structure) {
  Bytes copy(structure.begin(), structure.end());
  Fields fields(message, copy);
  json object = json::object();
  for (const Element& element : message.elements) {
    if (!fields.is_present(element)) continue;
    if (occurrences(message, element.name) > 1) {
      object[element.name].push_back(value_of(fields, element));
    } else {
      object[element.name] = value_of(fields, element);
    }
  }
  return object;
}

void from_json(const Message& message, const json& fields, std::span<uint8_t> structure) {
  std::fill(structure.begin(), structure.end(), uint8_t{0});
  if (!fields.is_object() && !fields.is_null()) {
    throw FieldError(std::string(message.name) + ": expected the fields as a JSON object");
  }
  Fields target(message, structure);
  for (const auto& [name, value] : fields.items()) {
    if (!target.knows(name)) {
      throw FieldError(std::string(message.name) + ": unknown field \"" + name + "\"");
    }
    store_named(target, name, value);
  }
}

}  // namespace qmi_json
