// SPDX-License-Identifier: Apache-2.0
// A model of the KPI packets: records are forwarded to the parent, packages are appended to the
// log.
#pragma once

#include <map>
#include <optional>

#include "tests/e2e/support/wire.h"

namespace soak {

using e2e::Bytes;

constexpr size_t kKpiHeaderSize = 6;

class KpiModel {
 public:
  // Takes the data of one indication. Returns the message to the parent, if there is one.
  std::optional<Bytes> take(Bytes packet);

  // All complete packages, in order.
  const Bytes& log() const { return log_; }

  // The state of the current package; -1 if there is none.
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
