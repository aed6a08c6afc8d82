// SPDX-License-Identifier: Apache-2.0
// The carrier's CDMA and LTE provisioning requests. Every CDMA-hook request is offered here first.
#pragma once

#include <stdint.h>

constexpr uint32_t kCarrierServed = 0;
constexpr uint32_t kCarrierDeclined = 0xFFFFFFFF;

// kCarrierServed when the request has been answered here (or is null), else kCarrierDeclined. The
// argument is not used.
uint32_t qorext_hook_sprint_handler(uint8_t* request, uint32_t argument);
