// SPDX-License-Identifier: Apache-2.0
// How a response says whether its request was served. Three conventions live side by side: the QMI
// result record (0 is success), a word or byte "status" (0 is success), and a word or byte
// "outcome" (1 is success) with an error behind it.
#pragma once

#include <stdint.h>

#include "platform/linux/qmi_json/fields.h"

namespace modem {

// The QMI error numbers that the modem answers with.
enum QmiError : uint16_t {
  kErrorNone = 0,
  kErrorMalformed = 1,
  kErrorNotProvisioned = 16,
  kErrorInvalidArgument = 48,
  kErrorAuthenticationFailed = 85,
  kErrorNoRadio = 93,
  kErrorNotSupported = 94,
};

constexpr uint16_t kResultFailure = 1;

void report_success(qmi_json::Fields& response);
// A convention without room for the error leaves it out.
void report_failure(qmi_json::Fields& response, uint16_t error, uint16_t result = kResultFailure);

}  // namespace modem
