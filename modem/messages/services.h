// SPDX-License-Identifier: Apache-2.0
// The services that the modem publishes.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/linux/qmi_idl/descriptor.h"

namespace modem {

// NAS, DMS and qorext, as their libraries describe them.
std::span<const qmi_idl::Service* const> services();

const qmi_idl::Service& nas_service();
const qmi_idl::Service& dms_service();
const qmi_idl::Service& qorext_service();

// Null when the modem has no such service.
const qmi_idl::Service* find_service(uint32_t id);
const qmi_idl::Service* find_service(std::string_view name);

// The number that instance `number`, counted from 1, is published with.
uint32_t instance_of(const qmi_idl::Service& service, uint32_t number = 1);

// "element_read", or "0x8" for a message without a description.
std::string message_name(const qmi_idl::Service& service, qmi_idl::Direction direction,
                         uint32_t id);

}  // namespace modem
