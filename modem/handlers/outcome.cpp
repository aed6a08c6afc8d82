// SPDX-License-Identifier: Apache-2.0
#include "modem/handlers/outcome.h"

namespace modem {
namespace {

constexpr int64_t kStatusSuccess = 0;
constexpr int64_t kStatusFailure = 1;
constexpr int64_t kOutcomeSuccess = 1;
constexpr int64_t kOutcomeFailure = 0;

void set_if_known(qmi_json::Fields& response, const char* name, int64_t value) {
  if (response.knows(name)) response.set(name, value);
}

}  // namespace

void report_success(qmi_json::Fields& response) {
  response.set_result(0, kErrorNone);
  set_if_known(response, "status", kStatusSuccess);
  set_if_known(response, "outcome", kOutcomeSuccess);
  set_if_known(response, "error", kErrorNone);
}

void report_failure(qmi_json::Fields& response, uint16_t error, uint16_t result) {
  response.set_result(result, error);
  set_if_known(response, "status", kStatusFailure);
  set_if_known(response, "outcome", kOutcomeFailure);
  set_if_known(response, "error", error);
}

}  // namespace modem
