// SPDX-License-Identifier: Apache-2.0
// What becomes of the modem's KPI packets: records go on to the parent, packages into the log.
#pragma once

#include <map>
#include <optional>

#include "tests/e2e/support/wire.h"

namespace soak {

using e2e::Bytes;

constexpr size_t kKpiHeaderSize = 6;

class KpiModel {
 public:
  // The data of one indication. The message that the parent gets, if there is one.
  std::optional<Bytes> take(Bytes packet);

  // All complete packages, one behind the other.
  const Bytes& log() const { return log_; }

  // For drawing packets that continue what has begun; -1 when nothing has.
  int package() const { return package_; }
  int expected_sequence() const { return expected_sequence_; }

 private:
  bool fits(int sequence, size_t size) const;
  void store(int sequence, const Bytes& payload);
  void reset() { package_ = expected_sequence_ = -1; }

  int package_ = -1;
  int expected_sequence_ = -1;
  std::map<int, Bytes> unfinished_;
  Bytes log_;
};

}  // namespace soak
