// SPDX-License-Identifier: Apache-2.0
// What has to hold whatever the input says. A property that does not hold ends the process, and the
// fuzzer keeps the input.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

[[noreturn]] inline void fail(const char* property, const char* file, int line) {
  fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, property);
  abort();
}

}  // namespace fuzz

#define FUZZ_REQUIRE(property) \
  ((property) ? static_cast<void>(0) : fuzz::fail(#property, __FILE__, __LINE__))
