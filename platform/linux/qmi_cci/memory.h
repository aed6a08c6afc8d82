// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qmi_cci {

// Returns free memory of the heap to the system. May take long.
void release_free_memory();

}  // namespace qmi_cci
