// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/memory.h"

#include <malloc.h>

namespace qmi_cci {

void release_free_memory() { malloc_trim(0); }

}  // namespace qmi_cci
