// SPDX-License-Identifier: Apache-2.0
// Encodes frames and structures for seeds, by the tables of the programs. Prints one line of
// hexadecimal text for each line of input:
//
//   request NAME ARGUMENT...              the frame that the tool sends
//   unsolicited NAME DATA                 the frame that the daemon writes
//   response SERVICE MESSAGE FIELDS       the C structure with these fields, a JSON object
//   indication SERVICE MESSAGE FIELDS
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "modem/messages/services.h"
#include "platform/linux/qmi_json/json_fields.h"
#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/frames/frames.h"

namespace {

using qorextctl::append_le;
using qorextctl::Bytes;

std::string word(std::istream& line) {
  std::string text;
  line >> text;
  return text;
}

Bytes request(std::istream& line) {
  std::vector<std::string> words;
  for (std::string next = word(line); !next.empty(); next = word(line)) words.push_back(next);
  auto command = qorextctl::parse_command(words, false);
  if (!command) throw std::invalid_argument(command.error().message);
  return command->bytes;
}

const protocol::UnsolicitedMessage& message_named(const std::string& name) {
  for (const auto& message : protocol::unsolicited_messages()) {
    if (name == message.name) return message;
  }
  throw std::invalid_argument("unknown unsolicited message: " + name);
}

Bytes unsolicited(std::istream& line) {
  const auto& message = message_named(word(line));
  Bytes data = qorextctl::parse_hex(word(line)).value();
  bool is_cdma = message.format == protocol::kUnsolCdmaFormat;
  Bytes frame;
  append_le(frame, message.format, 4);
  append_le(frame, is_cdma ? protocol::kUnsolCdmaHeaderSize : protocol::kGenericHeaderSize, 4);
  append_le(frame, message.id, 4);
  append_le(frame, static_cast<uint32_t>(data.size()), 4);
  frame.resize(is_cdma ? protocol::kUnsolCdmaDataOffset : protocol::kUnsolHeaderSize);
  frame.insert(frame.end(), data.begin(), data.end());
  frame.resize(data.size() + protocol::kUnsolOverhead);
  return frame;
}

Bytes structure(qmi_idl::Direction direction, std::istream& line) {
  const qmi_idl::Service* service = modem::find_service(word(line));
  const qmi_idl::Message* message =
      service ? qmi_json::find_by_name(*service, direction, word(line)) : nullptr;
  if (!message) throw std::invalid_argument("unknown message");
  std::string fields;
  std::getline(line, fields);
  Bytes bytes(message->size);
  qmi_json::from_json(*message, nlohmann::json::parse(fields), bytes);
  return bytes;
}

Bytes encoded(std::istream& line) {
  std::string kind = word(line);
  if (kind == "request") return request(line);
  if (kind == "unsolicited") return unsolicited(line);
  if (kind == "response") return structure(qmi_idl::Direction::response, line);
  if (kind == "indication") return structure(qmi_idl::Direction::indication, line);
  throw std::invalid_argument("unknown kind: " + kind);
}

}  // namespace

int main() try {
  for (std::string text; std::getline(std::cin, text);) {
    std::istringstream line(text);
    std::cout << qorextctl::to_hex(encoded(line)) << std::endl;
  }
  return 0;
} catch (const std::exception& error) {
  std::cerr << "encode: " << error.what() << '\n';
  return 1;
}
