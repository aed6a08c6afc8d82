// SPDX-License-Identifier: Apache-2.0
// Text that is long or deep and takes few bytes of the fuzzer's.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <string>

// Pieces, each of them repeated; about `most` bytes at most.
inline std::string consume_stretched(FuzzedDataProvider& input, size_t most) {
  constexpr size_t kMaxPiece = 4096;
  constexpr size_t kTimes[] = {1, 2, 31, 64, 65, 5000, 74300, 200000};
  std::string text;
  while (input.remaining_bytes() > 0 && text.size() < most) {
    std::string piece = input.ConsumeRandomLengthString(kMaxPiece);
    size_t times = input.PickValueInArray(kTimes);
    if (piece.empty()) break;
    times = std::min(times, (most - text.size()) / piece.size() + 1);
    for (size_t i = 0; i < times; ++i) text += piece;
  }
  return text;
}
