// SPDX-License-Identifier: Apache-2.0
// Which requests a load consists of, and how often each comes.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

struct MixEntry {
  std::string name;  // in the results; several entries may share one
  Bytes bytes;
  const Request* request = nullptr;  // null: raw bytes
  bool wants_failure = false;
  uint32_t weight = 1;
};

class Mix {
 public:
  // "nv-read:3,get-nam,unknown:2": a weight is 1 unless given. Where a request needs an argument,
  // the first value that completion offers is taken; "unknown" is one that the daemon does not
  // know.
  static Result<Mix> parse(const std::string& text);

  // Lines "WEIGHT LINE", where LINE is a session's: a request, "raw HEX", "expect-failure LINE".
  static Result<Mix> read(const std::string& path);

  // By their weights.
  const MixEntry& choose(std::mt19937& random) const;

  const std::vector<MixEntry>& entries() const { return entries_; }

 private:
  std::optional<Error> add(uint32_t weight, const std::string& name,
                           const std::vector<std::string>& words);

  std::vector<MixEntry> entries_;
  uint64_t weights_ = 0;
};

}  // namespace qorextctl
