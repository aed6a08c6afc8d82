// SPDX-License-Identifier: Apache-2.0
// What the modem can do wrong with an answer, by name.
#pragma once

namespace modem {

constexpr const char* kFaultKinds[] = {
    "silent",  // none comes
    "delay",   // it comes late
    "error",   // a refusal instead of it
    "truncated",
    "malformed",    // its first TLV claims more bytes than there are
    "garbage",      // random bytes instead of its TLVs
    "transaction",  // of another transaction
    "stray",        // one of another transaction, then the right one
    "duplicate",    // it comes twice
    "close",        // the service goes away and comes back
};

}  // namespace modem
