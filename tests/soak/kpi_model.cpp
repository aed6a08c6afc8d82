// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/kpi_model.h"

#include <algorithm>

namespace soak {

namespace {

constexpr size_t kPacketSize = 512;
constexpr int kFirst = 1;
constexpr size_t kHeaderWordSize = 4;
constexpr uint32_t kLogStart = 0x01C0FFEE;  // the only header that is not stored
constexpr uint32_t kRecords[] = {0x02C0FFEE, 0x03C0FFEE, 0x06C0FFEE, 0x07C0FFEE, 0x08C0FFEE};

bool is_record(uint32_t header) {
  return std::find(std::begin(kRecords), std::end(kRecords), header) != std::end(kRecords);
}

}  // namespace

bool KpiModel::fits(int sequence, size_t size) const {
  if (sequence == kFirst) return size > kHeaderWordSize;
  return sequence == expected_sequence_ && size != 0;
}

std::optional<Bytes> KpiModel::take(Bytes packet) {
  packet.resize(kPacketSize);
  int package = packet[0];
  int sequence = packet[1];
  bool is_last = packet[2] == 1;
  size_t size = qorextctl::load_le(packet, 4, 2);
  Bytes payload(packet.begin() + kKpiHeaderSize, packet.end());
  payload.resize(size);

  if (package_ == -1) package_ = package;
  if (expected_sequence_ == -1) expected_sequence_ = sequence;
  if (package != package_ || !fits(sequence, size)) {
    reset();
    return std::nullopt;
  }
  if (sequence == kFirst && is_record(qorextctl::load_le(payload, 0, 4))) {
    reset();
    payload.resize(size & 0xFF);
    return e2e::generic_message(e2e::hex("01040004"), payload);
  }
  ++expected_sequence_;
  store(sequence, payload);
  if (is_last) {
    const Bytes& whole = unfinished_[package];
    log_.insert(log_.end(), whole.begin(), whole.end());
    unfinished_.erase(package);
    reset();
  }
  return std::nullopt;
}

void KpiModel::store(int sequence, const Bytes& payload) {
  Bytes& file = unfinished_[package_];
  if (sequence == kFirst) file.clear();
  bool has_start = sequence == kFirst && qorextctl::load_le(payload, 0, 4) == kLogStart;
  auto from = payload.begin() + (has_start ? ptrdiff_t{kHeaderWordSize} : 0);
  file.insert(file.end(), from, payload.end());
}

}  // namespace soak
