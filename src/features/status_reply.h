// SPDX-License-Identifier: Apache-2.0
// The answer of a generic-hook feature that has nothing but a status to tell.
#pragma once

#include <stdint.h>

// The status byte for the result of a modem exchange.
uint8_t status_byte(int rc);

// Writes a generic reply whose only data is this byte.
void send_status_byte(const uint8_t* request, uint8_t status);
