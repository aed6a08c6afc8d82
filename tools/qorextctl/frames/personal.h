// SPDX-License-Identifier: Apache-2.0
// Personal fields and bytes of a frame: directory number, MIN, IMSI, service programming code,
// subsidy-lock code, A-key. Bytes of unknown meaning may contain any of these and are treated as
// personal. Replies show personal values; logs, recordings and traces, which are kept, mask them.
#pragma once

#include <string>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

constexpr const char* kMasked = "***";     // for a value
constexpr const char* kMaskedByte = "**";  // for each byte of hexadecimal text

// Replaces the values of personal fields by kMasked, and their bytes in `frame` by zeros.
void mask(DecodedFrame& decoded);

// The frame as hexadecimal text, with kMaskedByte for the personal bytes of a masked frame.
std::string hex_of(const DecodedFrame& decoded);

// kMaskedByte for each byte.
std::string masked_hex(size_t bytes);

// Whether an argument may be personal.
bool takes_personal(const Request& request);

// For the decoders, which record in `personal` what mask() hides.
bool touches_personal(const Request& request);
// The layout of bytes that no field describes.
const Layout& any_data();
// Records the personal fields; their places are relative to `data_offset`. In a malformed frame
// with personal fields, or of an unknown request, they may be anywhere: records all bytes after the
// header.
void note_personal(DecodedFrame& decoded, const Request* request, size_t data_offset,
                   size_t header_size);
// Records all bytes after the header, and their fields.
void note_payload(DecodedFrame& decoded, size_t data_offset, size_t header_size);
// Records all bytes, for a frame without a valid header.
void note_all(DecodedFrame& decoded);
// Records the code field of a CDMA-hook frame.
void note_code(DecodedFrame& decoded);
// Records what a CDMA-hook reply repeats of its request: the code field and, in a reply without
// data, the first two bytes of the payload.
void note_echo(DecodedFrame& decoded);

}  // namespace qorextctl
