// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_json/foreign_json.h"

namespace qmi_json {
namespace {

static_assert(kMaxLevels == 64 && kMaxMembers == 4096, "the messages contain the limits");
constexpr const char* kTooDeep = "is nested deeper than 64 levels";
constexpr const char* kTooWide = "has an object of more than 4096 members";

// The position of the string's closing quote, or a position at or after the end of the text.
size_t end_of_string(std::string_view text, size_t quote) {
  size_t at = quote + 1;
  while (at < text.size() && text[at] != '"') at += text[at] == '\\' ? 2 : 1;
  return at;
}

}  // namespace

// A text that is not JSON may exceed a limit as well. The library would reject it in any case.
const char* excess_of(std::string_view json) {
  size_t members[kMaxLevels + 1] = {};
  size_t level = 0;
  for (size_t at = 0; at < json.size(); ++at) {
    switch (json[at]) {
      case '"':
        at = end_of_string(json, at);
        break;
      case '[':
      case '{':
        if (level == kMaxLevels) return kTooDeep;
        members[++level] = 0;
        break;
      case ']':
      case '}':
        if (level > 0) --level;
        break;
      case ':':
        if (++members[level] > kMaxMembers) return kTooWide;
        break;
      default:
        break;
    }
  }
  return nullptr;
}

}  // namespace qmi_json
