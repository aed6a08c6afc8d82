// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>

namespace qmi_cci {

// What the indications that wait for a client's callback may take of the heap, in bytes.
constexpr size_t kDefaultQueueBound = size_t{64} << 20;
// Less would not hold one indication of the largest size and some before it.
constexpr size_t kMinQueueBound = size_t{128} << 10;

// The number in the environment variable QOREXT_INDICATION_QUEUE. The default when it is unset,
// and, with a line in the log, when it is not a decimal number of at least kMinQueueBound.
size_t queue_bound_from_environment();

}  // namespace qmi_cci
