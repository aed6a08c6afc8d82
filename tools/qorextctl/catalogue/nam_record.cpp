#include "catalogue/nam_record.h"

#include <fmt/format.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "base/spelling.h"

namespace qorextctl {

namespace {

using Json = nlohmann::json;

std::string read_all(std::istream& input) {
  return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

}  // namespace

Result<std::map<std::string, std::string>> parse_record(const std::string& text) {
  Json record = Json::parse(text, nullptr, false);
  if (record.is_object() && record.contains("fields")) record = Json(record["fields"]);
  if (!record.is_object()) return usage_error("the record is no JSON object");
  std::map<std::string, std::string> members;
  for (const auto& [key, member] : record.items()) {
    if (!member.is_string() && !member.is_number_integer()) {
      return usage_error(fmt::format("the record's '{}' is neither text nor a whole number", key));
    }
    members[argument_name(key)] = member.is_string() ? member.get<std::string>() : member.dump();
  }
  return members;
}

Result<std::map<std::string, std::string>> read_record(const std::string& file, bool stdin_free) {
  if (file == "-") {
    if (!stdin_free) return usage_error("standard input holds the session, name a file");
    return parse_record(read_all(std::cin));
  }
  std::ifstream input(file);
  if (!input) return usage_error(fmt::format("cannot read '{}'", file));
  return parse_record(read_all(input));
}

}  // namespace qorextctl
