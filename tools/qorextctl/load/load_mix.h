// SPDX-License-Identifier: Apache-2.0
// The requests of a load and their weights.
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
  std::string name;  // in the results; not unique
  Bytes bytes;
  const Request* request = nullptr;  // null: raw bytes
  bool expects_failure = false;
  uint32_t weight = 1;
};

class Mix {
 public:
  // "nv-read:3,get-nam,unknown:2". The default weight is 1. Required arguments get the first value
  // that completion offers; "unknown" is a request without a handler in the daemon.
  static Result<Mix> parse(const std::string& text);

  // Lines "WEIGHT LINE". LINE is as in a session: a request, "raw HEX" or "expect-failure LINE".
  static Result<Mix> read(const std::string& path);

  // Returns an entry at random, by weight.
  const MixEntry& choose(std::mt19937& random) const;

  const std::vector<MixEntry>& entries() const { return entries_; }

 private:
  std::optional<Error> add(uint32_t weight, const std::string& name,
                           const std::vector<std::string>& words);

  std::vector<MixEntry> entries_;
  uint64_t weights_ = 0;
};

}  // namespace qorextctl
