// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/recording/recording.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>

#include "modem/messages/packet.h"
#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/frames/item_text.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {

namespace {

// In the order of the variant.
constexpr const char* kTypes[] = {kFrame, kMessage, kService, kLog, kExit};
static_assert(std::size(kTypes) == std::variant_size_v<decltype(Event::what)>);

}  // namespace

Json EventText::members(const FrameEvent& frame) {
  DecodedFrame decoded = frames_.read(frame.kind, frame.bytes);
  if (!show_personal_) mask(decoded);
  Json members = {{"kind", name_of(frame.kind)}};
  members.update(to_json(decoded));
  return members;
}

Json EventText::members(const MessageEvent& event) {
  Json members = {{"service", event.service}, {"client", event.client}};
  auto message = messages_.read(event.service, event.client, event.packet);
  if (!message) return members;
  if (!show_personal_) mask(*message);
  members["direction"] = modem::direction_text(modem::direction_of(message->header.type));
  members["name"] = message->name;
  members["transaction"] = message->header.transaction;
  members["fields"] = message->fields;
  members["hex"] = hex_of(*message);
  return members;
}

Json EventText::members(const ServiceEvent& service) const {
  return {{"name", service.name}, {"up", service.is_up}};
}

Json EventText::members(const LogEvent& log) {
  LogEntry entry = log_.read(log.line);
  return {{"line", printable(show_personal_ ? log.line : entry.masked)}};
}

Json EventText::members(const ExitStatus& status) const {
  return {{"status", status.code}, {"signal", status.signal}};
}

Json EventText::show(const Event& event) {
  if (!event.masked.is_null()) return event.masked;
  Json shown = {{"type", kTypes[event.what.index()]}, {"time", event.time}};
  shown.update(std::visit([this](const auto& what) { return members(what); }, event.what));
  return shown;
}

Result<std::ofstream> create_file(const std::string& verb, const std::string& path,
                                  bool is_private) {
  bool is_ready = !is_private || open_private(path, O_TRUNC).valid();
  std::ofstream file(path);
  if (is_ready && file) return file;
  return usage_error(fmt::format("{}: cannot write '{}'", verb, path));
}

bool write_recording(const Recording& recording, std::ostream& file) {
  Json head = {{"type", kHead},
               {"version", kRecordingVersion},
               {"started", recording.started},
               {"instance", recording.instance},
               {"masked", recording.masked}};
  file << head.dump() << '\n';
  EventText text(!recording.masked);
  for (const Event& event : recording.events) {
    file << text.show(event).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
  }
  return static_cast<bool>(file.flush());
}

const Event* first_masked(const Recording& recording) {
  auto found = std::find_if(recording.events.begin(), recording.events.end(),
                            [](const Event& event) { return !event.masked.is_null(); });
  return found == recording.events.end() ? nullptr : &*found;
}

}  // namespace qorextctl
