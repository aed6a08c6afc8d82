// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <stdexcept>

#include "modem/messages/services.h"
#include "platform/linux/qmi_json/foreign_json.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/recording/recording.h"

namespace qorextctl {

namespace {

struct BadLine : std::runtime_error {
  using std::runtime_error::runtime_error;
};

const Json& member(const Json& object, const char* key) {
  auto found = object.find(key);
  if (found == object.end()) throw BadLine(fmt::format("'{}' is missing", key));
  return *found;
}

const Json& member(const Json& object, const char* key, bool (Json::*is_right)() const noexcept,
                   const char* expected) {
  const Json& value = member(object, key);
  if (!(value.*is_right)()) throw BadLine(fmt::format("'{}': expected {}", key, expected));
  return value;
}

std::string text_of(const Json& object, const char* key) {
  return member(object, key, &Json::is_string, "a string").get<std::string>();
}

bool flag_of(const Json& object, const char* key) {
  return member(object, key, &Json::is_boolean, "true or false").get<bool>();
}

int64_t number_of(const Json& object, const char* key, uint64_t max = INT64_MAX) {
  const Json& value = member(object, key, &Json::is_number, "a number");
  if (!value.is_number_unsigned() || value.get<uint64_t>() > max) {
    throw BadLine(fmt::format("'{}': {} is out of range (0 to {})", key, value.dump(), max));
  }
  return value.get<int64_t>();
}

int small_number_of(const Json& object, const char* key) {
  return static_cast<int>(number_of(object, key, UINT16_MAX));
}

// Returns no bytes when they are masked.
Bytes bytes_of(const Json& object) {
  std::string hex = text_of(object, "hex");
  if (hex.find(kMaskedByte) != std::string::npos) return {};
  auto bytes = parse_hex(hex);
  if (!bytes || bytes->empty()) throw BadLine("'hex': expected pairs of hexadecimal digits");
  return *bytes;
}

FrameEvent frame_of(const Json& object) {
  std::string kind = text_of(object, "kind");
  for (FrameKind known : {FrameKind::request, FrameKind::reply, FrameKind::unsolicited}) {
    if (kind == name_of(known)) return {known, bytes_of(object)};
  }
  throw BadLine(fmt::format("unknown kind of frame '{}'", kind));
}

std::string service_of(const Json& object, const char* key) {
  std::string name = text_of(object, key);
  if (modem::find_service(std::string_view(name))) return name;
  throw BadLine(fmt::format("unknown service '{}'", name));
}

MessageEvent message_of(const Json& object) {
  MessageEvent event{service_of(object, "service"),
                     static_cast<uint64_t>(number_of(object, "client")), bytes_of(object)};
  if (!event.packet.empty() && !qmi_idl::load_header(event.packet)) {
    throw BadLine("'hex' is not a QMI message");
  }
  return event;
}

Event event_of(Json object) {
  Event event{number_of(object, "time"), LogEvent{}};
  std::string type = text_of(object, "type");
  bool has_bytes = type == kFrame || type == kMessage;
  if (type == kFrame) {
    event.what = frame_of(object);
  } else if (type == kMessage) {
    event.what = message_of(object);
  } else if (type == kService) {
    event.what = ServiceEvent{service_of(object, "name"), flag_of(object, "up")};
  } else if (type == kLog) {
    event.what = LogEvent{text_of(object, "line")};
  } else if (type == kExit) {
    event.what = ExitStatus{small_number_of(object, "status"), small_number_of(object, "signal")};
  } else {
    throw BadLine(fmt::format("unknown type '{}'", type));
  }
  if (has_bytes && bytes_of(object).empty()) event.masked = std::move(object);
  return event;
}

Recording head_of(const Json& head) {
  if (text_of(head, "type") != kHead) throw BadLine("is not the head of a recording");
  int64_t version = number_of(head, "version");
  if (version != kRecordingVersion) {
    throw BadLine(
        fmt::format("version {} is not supported, expected {}", version, kRecordingVersion));
  }
  return {static_cast<unsigned>(small_number_of(head, "instance")), flag_of(head, "masked"),
          text_of(head, "started")};
}

Json object_of(const std::string& line) {
  auto [object, excess] = qmi_json::parse_foreign<Json>(line);
  if (excess) throw BadLine(excess);
  if (!object.is_object()) throw BadLine("is not a JSON object");
  return std::move(object);
}

void add(Recording& recording, Event event, size_t line) {
  event.line = line;
  if (!recording.events.empty() && event.time < recording.events.back().time) {
    throw BadLine("is earlier than the line before");
  }
  recording.events.push_back(std::move(event));
}

}  // namespace

Result<Recording> read_recording(const std::string& path) {
  std::ifstream file(path);
  if (!file) return usage_error(fmt::format("cannot read '{}'", path));
  return read_recording(file, path);
}

Result<Recording> read_recording(std::istream& file, const std::string& name) {
  Recording recording;
  size_t number = 0;
  try {
    LineReader lines(file);
    std::string line;
    for (auto read = lines.next(line); read != LineReader::Line::none; read = lines.next(line)) {
      ++number;
      if (read == LineReader::Line::too_long) {
        throw BadLine(fmt::format("is longer than {} bytes", kMaxLineBytes));
      }
      Json object = object_of(line);
      if (number == 1) {
        recording = head_of(object);
      } else {
        add(recording, event_of(std::move(object)), number);
      }
    }
  } catch (const BadLine& bad) {
    return usage_error(fmt::format("{}: line {}: {}", name, number, printable(bad.what())));
  }
  if (number == 0) return usage_error(fmt::format("{}: is empty, expected a recording", name));
  return recording;
}

}  // namespace qorextctl
