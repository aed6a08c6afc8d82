// SPDX-License-Identifier: Apache-2.0
// Which bytes and fields of a frame tell who the subscriber is, or open what is locked: directory
// number, MIN, IMSI, service programming code, subsidy-lock code, A-key. Bytes whose meaning is not
// known may hold any of these and count as personal. They are shown to those who ask the phone for
// them, and masked in what is kept and passed on: logs, recordings, traces.
#pragma once

#include <string>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

constexpr const char* kMasked = "***";     // for a value
constexpr const char* kMaskedByte = "**";  // for a byte in hex, so that places stay

// The values of personal fields become kMasked, their bytes in `frame` zero.
void mask(DecodedFrame& decoded);

// The frame as hex, personal bytes of a masked frame as kMaskedByte.
std::string hex_of(const DecodedFrame& decoded);

// All bytes masked.
std::string masked_hex(size_t bytes);

// Whether an argument may be personal.
bool takes_personal(const Request& request);

// For the decoders, which note in `personal` what mask() has to hide.
bool touches_personal(const Request& request);
// Bytes that no field describes.
const Layout& any_data();
// Personal fields, whose places count from `data_offset`. Where a frame that has some, or one of an
// unknown request, is malformed, all bytes after its header: they may lie anywhere.
void note_personal(DecodedFrame& decoded, const Request* request, size_t data_offset,
                   size_t header_size);
// All bytes after the header, and the fields that lie there.
void note_payload(DecodedFrame& decoded, size_t data_offset, size_t header_size);
// The header, too: it is none.
void note_all(DecodedFrame& decoded);
// The code field of a CDMA-hook frame.
void note_code(DecodedFrame& decoded);
// What a CDMA-hook reply repeats of its request: the code field, and behind it the first two bytes
// of the payload where the reply has no data.
void note_echo(DecodedFrame& decoded);

}  // namespace qorextctl
