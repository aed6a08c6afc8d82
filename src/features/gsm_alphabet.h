// SPDX-License-Identifier: Apache-2.0
// The GSM 7-bit default alphabet (3GPP TS 23.038, 6.2.1), unpacked to one character per byte. The
// simulated modem has an independent table, which tests compare with this one.
#pragma once

#include <stddef.h>
#include <stdint.h>

// The size of the longest UTF-8 text that a GSM text can become, without its terminator.
constexpr size_t utf8_limit(size_t gsm_length) { return 2 * gsm_length; }

// Converts to UTF-8 and terminates the text: `output` needs utf8_limit(length) + 1 bytes. Carriage
// returns are dropped; bytes of 0x80 and more are copied unchanged, for texts that are already
// UTF-8 or Latin-1. There is no extension table: its escape becomes a space. Returns the number of
// bytes written, without the terminator; 0 when a pointer is null or the length is 0.
size_t gsm_to_utf8(const uint8_t* input, uint16_t length, char* output);
