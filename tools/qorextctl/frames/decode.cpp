// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/decode.h"

#include <fmt/format.h>

#include <algorithm>

#include "protocol/cdma_digits.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

namespace {

using Problems = std::vector<std::string>;

size_t element_size(const Field& field) {
  size_t width = width_of(field.type);
  return width != 0 ? width : field.size;
}

int32_t sign_extended(uint32_t number, size_t width) {
  auto unused = static_cast<unsigned>(32 - 8 * width);
  return static_cast<int32_t>(number << unused) >> unused;
}

Json number_at(const Field& field, View data, size_t offset) {
  size_t width = width_of(field.type);
  if (field.type == Type::u32_be) return load_be(data, offset, width);
  uint32_t number = load_le(data, offset, width);
  if (is_signed(field.type)) return sign_extended(number, width);
  return number;
}

// Up to the first NUL.
std::string text_in(View characters) {
  auto end = std::find(characters.begin(), characters.end(), uint8_t{0});
  return printable({characters.begin(), end});
}

std::optional<uint32_t> counter(const char* name, const Items& items) {
  for (const Item& item : items) {
    if (name == item.name) return item.value.get<uint32_t>();
  }
  return std::nullopt;
}

// The number of elements or bytes present, or the smaller one that another field states.
size_t used(size_t present, const char* counted_by, const Items& items, const char* name,
            Problems& problems) {
  if (!counted_by) return present;
  size_t stated = counter(counted_by, items).value_or(0);
  if (stated <= present) return stated;
  problems.push_back(
      fmt::format("{} states {}, {} has room for {}", counted_by, stated, name, present));
  return present;
}

Json array_at(const Field& field, View data, size_t count) {
  Json values = Json::array();
  for (size_t i = 0; i < count; ++i) {
    values.push_back(number_at(field, data, field.offset + i * width_of(field.type)));
  }
  return values;
}

// All complete values, in the form of an argument.
Json list_in(const Field& field, View content, const Items& items, Problems& problems) {
  constexpr size_t kWidth = sizeof(uint32_t);
  size_t numbers = field.type == Type::pairs ? 2 : 1;
  size_t count =
      used(content.size() / (kWidth * numbers), field.counted_by, items, field.name, problems);
  Json values = Json::array();
  for (size_t i = 0; i < count; ++i) {
    uint32_t first = load_le(content, i * numbers * kWidth, kWidth);
    if (numbers == 1) {
      values.push_back(first);
    } else {
      values.push_back(
          fmt::format("{}/{}", first, load_le(content, (i * numbers + 1) * kWidth, kWidth)));
    }
  }
  return values;
}

std::string dialled(View digits) {
  std::string text;
  for (uint8_t digit : digits) {
    text += digit > kZeroDigit ? '?' : decode_digit(digit);
  }
  return text;
}

Json content_at(const Field& field, View content, const Items& items, Problems& problems) {
  switch (field.type) {
    case Type::numbers:
    case Type::pairs:
      return list_in(field, content, items, problems);
    case Type::hex:
    case Type::dial:
      content = content.first(used(content.size(), field.counted_by, items, field.name, problems));
      return field.type == Type::hex ? to_hex(content) : dialled(content);
    default:
      return text_in(content);
  }
}

Json value_at(const Field& field, View data, const Items& items, Problems& problems) {
  if (width_of(field.type) != 0) {
    if (field.count == 1) return number_at(field, data, field.offset);
    return array_at(field, data, used(field.count, field.counted_by, items, field.name, problems));
  }
  View content = part(data, field.offset, field.size == 0 ? data.size() : field.size);
  return content_at(field, content, items, problems);
}

bool is_personal(const Field& field, const Items& items) {
  if (field.privacy != Privacy::as_item) return field.privacy == Privacy::personal;
  auto item = counter("rde-id", items);
  return !item || is_personal_item(*item);
}

// Includes the bytes after those in use.
ByteRange place_of(const Field& field, View data) {
  size_t size = element_size(field) * field.count;
  return {field.offset, size != 0 ? size : data.size() - field.offset};
}

void decode_into(Items& items, std::span<const Field> fields, View data, Problems& problems) {
  for (const Field& field : fields) {
    if (!lies_within(field, data)) {
      problems.push_back(fmt::format("{} is missing: the data ends before", field.name));
      continue;
    }
    items.push_back({field.name,
                     value_at(field, data, items, problems),
                     {},
                     false,
                     is_personal(field, items),
                     place_of(field, data)});
  }
}

Item decode_group(const Group& group, View data, const Items& items, Problems& problems) {
  Item item{group.name, nullptr, {}, true};
  size_t count = used(group.count, group.counted_by, items, group.name, problems);
  for (size_t i = 0; i < count; ++i) {
    View record = part(data, group.offset + i * group.stride, group.stride);
    decode_into(item.records.emplace_back(), group.fields, record, problems);
  }
  return item;
}

}  // namespace

bool lies_within(const Field& field, View data) {
  return field.offset + element_size(field) * field.count <= data.size();
}

void check_size(DecodedFrame& decoded, size_t overhead) {
  size_t stated = size_t{decoded.length} + overhead;
  if (decoded.frame.size() == stated) return;
  decoded.problems.push_back(
      fmt::format("the length field says {}, the frame has {} bytes instead of {}", decoded.length,
                  decoded.frame.size(), stated));
}

Items decode_fields(const Layout& layout, View data, Problems& problems) {
  Items items;
  if (layout.size != 0 && data.size() != layout.size) {
    problems.push_back(fmt::format("{} bytes of data, {} expected", data.size(), layout.size));
  }
  decode_into(items, layout.fields, data, problems);
  if (layout.group) items.push_back(decode_group(*layout.group, data, items, problems));
  return items;
}

std::string id_text(Family family, uint32_t id) {
  return family == Family::cdma ? fmt::format("0x{:08X}", id) : fmt::format("0x{:06X}", id);
}

std::string status_name(uint32_t status) {
  for (const Status& known : kStatuses) {
    if (known.value == status) return known.name;
  }
  return "unknown";
}

}  // namespace qorextctl
