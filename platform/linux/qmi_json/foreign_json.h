// SPDX-License-Identifier: Apache-2.0
// Parses JSON from untrusted sources. The JSON library copies, writes and partly destroys values by
// recursion, and searches ordered objects linearly. The text is therefore checked against limits,
// in one pass without recursion, before the library parses it.
#pragma once

#include <cstddef>
#include <string_view>

namespace qmi_json {

// Nested arrays and objects.
constexpr size_t kMaxLevels = 64;
// Members of one object.
constexpr size_t kMaxMembers = 4096;

// Returns null for a text within the limits, valid JSON or not. Otherwise returns what is wrong,
// for example "is nested deeper than 64 levels".
const char* excess_of(std::string_view json);

template <class Json>
struct Parsed {
  Json value;                    // discarded when the text is not JSON or exceeds a limit
  const char* excess = nullptr;  // the result of excess_of()
};

// Never throws. Json is one of the library's types, such as nlohmann::json.
template <class Json>
Parsed<Json> parse_foreign(std::string_view text) {
  const char* excess = excess_of(text);
  if (excess != nullptr) return {Json(Json::value_t::discarded), excess};
  return {Json::parse(text, nullptr, false), nullptr};
}

}  // namespace qmi_json
