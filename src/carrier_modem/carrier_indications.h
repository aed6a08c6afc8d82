// SPDX-License-Identifier: Apache-2.0
// The vendor service's indications of carrier events, each forwarded as an unsolicited message.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "qmi_client.h"

// Vendor indication 0x10B, decoded.
struct LteErrorIndication {
  uint32_t first_value;
  uint8_t second_value;
  uint32_t third_value;
  uint8_t text[103];
};
static_assert(sizeof(LteErrorIndication) == 116);
static_assert(offsetof(LteErrorIndication, third_value) == 8);
static_assert(offsetof(LteErrorIndication, text) == 12);

// 0 when the indication is a carrier one, even if it could not be decoded; -1 for any other. Runs
// on the client library's callback thread.
int qor_qmi_sprint_hook_ind_cb(qmi_client_type client, unsigned int indication_id, void* buffer,
                               unsigned int length, void* callback_data);

// Forwards an LTE error, packed; a null record becomes zeros.
void convert_lte_error_to_ril_format(const LteErrorIndication* indication);

// Forwards the value of a carrier event.
void send_unsol_response(uint32_t value);
