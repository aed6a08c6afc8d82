// SPDX-License-Identifier: Apache-2.0
// Helpers for all fuzz targets.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

// Aborts if the property does not hold; the fuzzer then keeps the input.
#define FUZZ_REQUIRE(property) \
  ((property) ? static_cast<void>(0) : fuzz::fail(#property, __FILE__, __LINE__))

namespace fuzz {

using Bytes = std::vector<uint8_t>;

[[noreturn]] inline void fail(const char* property, const char* file, int line) {
  fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, property);
  abort();
}

inline Bytes consume_bytes(FuzzedDataProvider& input, size_t max, size_t min = 0) {
  return input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(min, max));
}

// Consumes text of about `max` bytes at most. Repeated pieces make it long or deeply nested from a
// short input.
inline std::string consume_stretched(FuzzedDataProvider& input, size_t max) {
  constexpr size_t kMaxPiece = 4096;
  constexpr size_t kTimes[] = {1, 2, 31, 64, 65, 5000, 74300, 200000};
  std::string text;
  while (input.remaining_bytes() > 0 && text.size() < max) {
    std::string piece = input.ConsumeRandomLengthString(kMaxPiece);
    size_t times = input.PickValueInArray(kTimes);
    if (piece.empty()) break;
    times = std::min(times, (max - text.size()) / piece.size() + 1);
    for (size_t i = 0; i < times; ++i) text += piece;
  }
  return text;
}

// A temporary folder for one run, in memory if the machine has such a file system.
class Scratch {
 public:
  Scratch() {
    const std::filesystem::path memory = "/dev/shm";
    auto parent = std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
    std::string name = parent / "qorext-fuzz-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) abort();
    root_ = name;
  }
  ~Scratch() { std::filesystem::remove_all(root_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  const std::filesystem::path& root() const { return root_; }

 private:
  std::filesystem::path root_;
};

// The folder of this process, created at the first call.
inline const std::filesystem::path& scratch_root() {
  static const Scratch scratch;
  return scratch.root();
}

}  // namespace fuzz
