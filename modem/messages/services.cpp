// SPDX-License-Identifier: Apache-2.0
#include "modem/messages/services.h"

#include <fmt/format.h>

#include "device_management_service_v01.h"
#include "network_access_service_v01.h"
#include "platform/linux/qmi_idl/interface_versions.h"
#include "qorext_vendor_service_v01.h"

namespace modem {

using qmi_idl::Service;
using qmi_idl::service_of;

namespace {

using ServiceGetter = decltype(nas_get_service_object_internal_v01);

const Service& service_for(ServiceGetter getter, qmi_idl::InterfaceVersion version) {
  return service_of(getter(version.major, version.minor, version.tool));
}

}  // namespace

const Service& nas_service() {
  static const Service& service =
      service_for(nas_get_service_object_internal_v01, qmi_idl::kNasInterface);
  return service;
}

const Service& dms_service() {
  static const Service& service =
      service_for(dms_get_service_object_internal_v01, qmi_idl::kDmsInterface);
  return service;
}

const Service& qorext_service() {
  static const Service& service =
      service_for(qorext_vs_get_service_object_internal_v01, qmi_idl::kQorextInterface);
  return service;
}

std::span<const Service* const> services() {
  static const Service* const kServices[] = {&nas_service(), &dms_service(), &qorext_service()};
  return kServices;
}

const Service* find_service(uint32_t id) {
  for (const Service* service : services()) {
    if (service->id == id) return service;
  }
  return nullptr;
}

const Service* find_service(std::string_view name) {
  for (const Service* service : services()) {
    if (name == service->name) return service;
  }
  return nullptr;
}

uint32_t instance_of(const Service& service, uint32_t number) {
  constexpr uint32_t kInstanceShift = 8;
  return number << kInstanceShift | service.version;
}

std::string message_name(const Service& service, qmi_idl::Direction direction, uint32_t id) {
  const qmi_idl::Message* message = find(service, direction, id);
  return message == nullptr ? fmt::format("0x{:X}", id) : message->name;
}

}  // namespace modem
