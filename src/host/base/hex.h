// SPDX-License-Identifier: Apache-2.0
// Bytes as upper-case hexadecimal text.
#pragma once

#include <stddef.h>
#include <stdint.h>

constexpr size_t kHexDumpLimit = 1024;

// Logs the bytes as one line; more than kHexDumpLimit are refused with a line of their own.
void hexDump(const void* buffer, size_t length);

// Writes two digits a byte and a NUL: `text` needs room for 2 * length + 1 characters.
void toHexString(size_t length, const void* buffer, char* text);
