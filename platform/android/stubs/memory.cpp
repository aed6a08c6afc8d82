// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/memory.h"

namespace qmi_cci {

// bionic has no malloc_trim(); its allocator returns free memory by itself.
void release_free_memory() {}

}  // namespace qmi_cci
