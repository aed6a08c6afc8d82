// SPDX-License-Identifier: Apache-2.0
// The whole process until the end of the request pipe: services that are up or not, the kernel's
// files about the last crash, the modem's versions.
#include <fstream>

#include "fuzz/phone.h"
#include "fuzz/support.h"

int qorext_client_main(int argc, char** argv);

namespace {

constexpr char kBootInfo[] = "proc/bootinfo";
constexpr char kModemRestarts[] = "sys/module/subsystem_restart/parameters/modem_restarts";
constexpr char kRestartReason[] = "sys/module/pil_q6v5_mss/parameters/ssr_reason";
constexpr size_t kMaxText = 2048;

void consume_file(FuzzedDataProvider& input, const char* path) {
  std::filesystem::remove(fuzz::scratch_root() / path);
  if (!input.ConsumeBool()) return;
  std::ofstream(fuzz::scratch_root() / path) << input.ConsumeRandomLengthString(kMaxText);
}

void check_properties(const fuzz::Phone& phone) {
  for (const auto& [name, value] : phone.properties) {
    FUZZ_REQUIRE(name.starts_with("ril.lte.") || name.starts_with("ril.baseband."));
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  for (const char* path : {kBootInfo, kModemRestarts, kRestartReason}) {
    std::filesystem::create_directories((fuzz::scratch_root() / path).parent_path());
  }
  setenv("QOREXT_PHONE_ROOT", fuzz::scratch_root().c_str(), 1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  fuzz::Phone phone(input);
  phone.has_fuzzed_bring_up = true;
  phone.next_request = [] { return fuzz::Bytes(); };
  for (const char* path : {kBootInfo, kModemRestarts, kRestartReason}) consume_file(input, path);

  char program[] = "qorext_client";
  char request[] = "600";
  char reply[] = "601";
  char unsolicited[] = "602";
  std::string instance = input.ConsumeRandomLengthString(4);
  char* arguments[] = {program, request, reply, unsolicited, instance.data(), nullptr};
  FUZZ_REQUIRE(qorext_client_main(input.ConsumeIntegralInRange(4, 5), arguments) == 0);
  FUZZ_REQUIRE(phone.replies.empty() && phone.unsolicited.empty());
  check_properties(phone);
  return 0;
}
