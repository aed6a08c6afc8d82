// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/json_record.h"

#include <fmt/format.h>

#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "platform/linux/qmi_json/foreign_json.h"
#include "tools/qorextctl/base/text.h"

namespace qorextctl {

namespace {

using Record = nlohmann::json;

Result<std::map<std::string, std::string>> parse_all(std::istream& input) {
  std::string text;
  if (read_whole(input, text)) return parse_record(text);
  return usage_error(fmt::format("the record is longer than {} bytes", kMaxLineBytes));
}

}  // namespace

Result<std::map<std::string, std::string>> parse_record(const std::string& text) {
  auto [record, excess] = qmi_json::parse_foreign<Record>(text);
  if (excess) return usage_error(fmt::format("the record {}", excess));
  if (record.is_object() && record.contains("fields")) record = Record(record["fields"]);
  if (!record.is_object()) return usage_error("the record is not a JSON object");
  std::map<std::string, std::string> members;
  for (const auto& [key, member] : record.items()) {
    if (!member.is_string() && !member.is_number_integer()) {
      return usage_error(fmt::format("the record's '{}': expected a string or an integer", key));
    }
    members[argument_name(key)] = member.is_string() ? member.get<std::string>() : member.dump();
  }
  return members;
}

Result<std::map<std::string, std::string>> read_record(const std::string& file, bool stdin_free) {
  if (file == "-") {
    if (!stdin_free) return usage_error("standard input holds the session, name a file");
    return parse_all(std::cin);
  }
  std::ifstream input(file);
  if (!input) return usage_error(fmt::format("cannot read '{}'", file));
  return parse_all(input);
}

}  // namespace qorextctl
