// SPDX-License-Identifier: Apache-2.0
// JSON from outside. The library's values are copied, written and in part destroyed by recursion,
// and an object with its members in order is searched from its front. So a text is measured, in one
// pass without recursion, before the library sees it.
#pragma once

#include <cstddef>
#include <string_view>

namespace qmi_json {

// Arrays and objects within one another.
constexpr size_t kMaxLevels = 64;
// Members of one object.
constexpr size_t kMaxMembers = 4096;

// Null for a text within the limits, JSON or not; else what it is: "is nested deeper than 64
// levels".
const char* excess_of(std::string_view json);

template <class Json>
struct Parsed {
  Json value;                    // discarded where the text is not JSON or has an excess
  const char* excess = nullptr;  // as excess_of() gives it
};

// Never throws. Json is one of the library's types, such as nlohmann::json.
template <class Json>
Parsed<Json> parse_foreign(std::string_view text) {
  const char* excess = excess_of(text);
  if (excess != nullptr) return {Json(Json::value_t::discarded), excess};
  return {Json::parse(text, nullptr, false), nullptr};
}

}  // namespace qmi_json
