// SPDX-License-Identifier: Apache-2.0
// Secrets on their way to the modem: A-key, service programming code, subsidy-lock code. All are
// characters as the parent gave them, not terminated; none is kept here.
#pragma once

#include <stdint.h>

// Writes the CDMA A-key, which must have 26 characters; anything else is refused without a message
// to the modem. `code` holds the 6 characters of the service programming code. 1, or 0.
int qcril_qmi_nas_qor_cdma_validate_and_write_akey(const uint8_t* code, const uint8_t* akey,
                                                   int32_t akey_length);

// Changes the service programming code; 6 characters each. 1, or 0.
int qor_qmi_sprint_write_spc(const uint8_t* current_spc, const uint8_t* new_spc);

// Has the modem compare the 6-character subsidy-lock code. 1 when it matches, or 0.
int verify_subsidy_lock(const uint8_t* code);
