// SPDX-License-Identifier: Apache-2.0
// Single steps of the handling of a request.
#include <benchmark/benchmark.h>

#include <vector>

#include "platform/linux/qmi_idl/codec.h"
#include "qorext_vendor_service_v01.h"
#include "src/host/base/bytes.h"
#include "src/host/base/framing.h"

namespace {

// A whole hex dump without its log call.
void hex_text(benchmark::State& state) {
  std::vector<uint8_t> bytes(static_cast<size_t>(state.range(0)), 0x5A);
  std::vector<char> text(2 * bytes.size() + 1);
  for (auto _ : state) {
    toHexString(bytes.size(), bytes.data(), text.data());
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(hex_text)->Arg(64)->Arg(568)->Arg(1024);

void classify(benchmark::State& state) {
  uint8_t request[kRequestSize] = {0x16, 0, 0, 2};
  for (auto _ : state) {
    uint32_t type = 0;
    benchmark::DoNotOptimize(request);
    benchmark::DoNotOptimize(getOemHook(request, sizeof request, &type));
  }
}
BENCHMARK(classify);

void encode_and_decode(benchmark::State& state, uint32_t message_id) {
  const auto& service = qmi_idl::service_of(qorext_vs_get_service_object_internal_v01(1, 1, 4));
  const auto& message = *find(service, qmi_idl::Direction::response, message_id);
  std::vector<uint8_t> structure(message.size);
  std::vector<uint8_t> wire(UINT16_MAX);
  for (auto _ : state) {
    auto size = static_cast<size_t>(encode(message, structure, wire));
    benchmark::DoNotOptimize(decode(message, std::span(wire).first(size), structure));
  }
}
BENCHMARK_CAPTURE(encode_and_decode, element_read, 0x08);
BENCHMARK_CAPTURE(encode_and_decode, data_plmn, 0x16);

}  // namespace
