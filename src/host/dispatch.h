// SPDX-License-Identifier: Apache-2.0
// Which handler serves which request.
#pragma once

#include <stdint.h>

// Calls the handler of a generic-hook request by its parsed id; an unknown id gets the 8-byte error
// reply. The request is a whole buffer of kRequestSize bytes.
void dispatch_generic(const uint8_t* request, uint32_t id);

// Offers a CDMA-hook request to the carrier handler, then to the fallback table; an id in neither
// gets a reply of status 6. The carrier handler answers in the request's own header and so changes
// the buffer.
void dispatch_cdma(uint8_t* request, uint32_t id);
