// SPDX-License-Identifier: Apache-2.0
// The network access service (NAS, QMI service 3), described by libqmiservices.so.
#pragma once

#include <stdint.h>

#include "qmi_client.h"

#ifdef __cplusplus
extern "C" {
#endif

// Null unless the library describes this interface version with this tool version.
qmi_idl_service_object_type nas_get_service_object_internal_v01(int32_t idl_major_version,
                                                                int32_t idl_minor_version,
                                                                int32_t tool_version);

#ifdef __cplusplus
}
#endif
