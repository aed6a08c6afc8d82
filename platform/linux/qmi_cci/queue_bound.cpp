// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/queue_bound.h"

#include <stdlib.h>

#include <charconv>
#include <string_view>
#include <system_error>

#include "platform/linux/qmi_cci/log.h"

namespace qmi_cci {
namespace {

constexpr char kVariable[] = "QOREXT_INDICATION_QUEUE";

// 0 for what is no number.
size_t number_in(std::string_view text) {
  size_t number = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

}  // namespace

size_t queue_bound_from_environment() {
  const char* text = getenv(kVariable);
  if (text == nullptr) return kDefaultQueueBound;
  size_t bound = number_in(text);
  if (bound >= kMinQueueBound) return bound;
  LOGE("%s: %s is not a number of bytes from %zu on; %zu is taken", kVariable, text, kMinQueueBound,
       kDefaultQueueBound);
  return kDefaultQueueBound;
}

}  // namespace qmi_cci
