// SPDX-License-Identifier: Apache-2.0
#include "modem/messages/fault.h"

#include <algorithm>
#include <iterator>

#include "modem/messages/services.h"

namespace modem {
namespace {

bool is_kind(const std::string& name) {
  return std::any_of(std::begin(kFaultKinds), std::end(kFaultKinds),
                     [&name](const char* kind) { return name == kind; });
}

bool has_request(const qmi_idl::Service& service, const std::string& name) {
  return std::any_of(
      service.messages.begin(), service.messages.end(), [&name](const qmi_idl::Message& message) {
        return message.direction == qmi_idl::Direction::request && name == message.name;
      });
}

bool is_known_message(const Fault& fault) {
  if (fault.message == "any" || fault.message.starts_with("0x")) return true;
  return std::any_of(services().begin(), services().end(), [&](const qmi_idl::Service* service) {
    return (fault.service == "any" || fault.service == service->name) &&
           has_request(*service, fault.message);
  });
}

}  // namespace

void describe(Archive& archive, Fault& fault) {
  archive.text("service", fault.service, up_to(kMaxName));
  archive.text("message", fault.message, up_to(kMaxName));
  archive.require(archive.text("kind", fault.kind, up_to(kMaxName)), "kind");
  archive.number("times", fault.times);
  archive.number("delay_ms", fault.delay_ms);
  archive.number("result", fault.result);
  archive.number("error", fault.error);
  archive.number("bytes", fault.bytes);
  if (!archive.is_reading()) return;

  if (fault.service != "any" && find_service(fault.service) == nullptr) {
    archive.refuse("service", "unknown service \"" + fault.service + "\"");
  }
  if (!is_known_message(fault)) {
    archive.refuse("message", "unknown request \"" + fault.message + "\"");
  }
  if (!is_kind(fault.kind)) {
    archive.refuse("kind", "unknown kind of fault \"" + fault.kind + "\"");
  }
}

}  // namespace modem
