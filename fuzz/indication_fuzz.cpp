// SPDX-License-Identifier: Apache-2.0
// The modem's indications from the callback to their effects: unsolicited frames, KPI logs, the
// hand-off block in its partition.
#include "fuzz/phone.h"
#include "fuzz/support.h"
#include "qorext_vendor_service_v01.h"
#include "src/capture/capture.h"
#include "src/host/base/framing.h"
#include "src/vendor/utility_messages.h"

namespace {

constexpr size_t kMaxIndications = 50;
constexpr size_t kMaxEncoded = 2048;
constexpr size_t kUnsolOverhead = 28;
constexpr uintmax_t kHobRamSize = 0xF540000 + 0x8000;

constexpr unsigned int kIndications[] = {0x1, 0xA, 0xF, 0x12, 0x13, 0x16, 0x10B, 0x10C};

void make_file(const char* path, uintmax_t size) {
  std::filesystem::create_directories((fuzz::scratch_root() / path).parent_path());
  fclose(fopen((fuzz::scratch_root() / path).c_str(), "w"));
  std::filesystem::resize_file(fuzz::scratch_root() / path, size);
}

// Resets the store to that of a new process. The empty packet ends an open package.
void empty_store() {
  const uint8_t packet[kUtilityDataSize] = {};
  vornIndHndlr(packet);
  for (const auto& entry :
       std::filesystem::directory_iterator(fuzz::scratch_root() / "data/vorn")) {
    std::filesystem::remove(entry);
  }
}

qmi_client_type vendor_client() { return qorext_vs_get_service_object_internal_v01(1, 1, 4); }

void check_unsolicited(const fuzz::Bytes& frame) {
  FUZZ_REQUIRE(frame.size() >= kUnsolOverhead);
  uint32_t format = load_le32(&frame[0]);
  FUZZ_REQUIRE(format <= 1);
  FUZZ_REQUIRE(load_le32(&frame[4]) == (format == 0 ? kCdmaReplySize : kGenericHeaderSize));
  FUZZ_REQUIRE(frame.size() == load_le32(&frame[12]) + kUnsolOverhead);
}

void check_properties(const fuzz::Phone& phone) {
  for (const auto& [name, value] : phone.properties) {
    FUZZ_REQUIRE(name == "ril.baseband.rfcable.status");
    FUZZ_REQUIRE(value == "0" || value == "1");
  }
}

void indicate(fuzz::Phone& phone) {
  unsigned int id = phone.input.ConsumeBool() ? phone.input.ConsumeIntegral<uint32_t>()
                                              : phone.input.PickValueInArray(kIndications);
  auto encoded = fuzz::consume_bytes(phone.input, kMaxEncoded);
  phone.now += phone.input.ConsumeIntegral<int8_t>();
  fuzz::indication_callback()(vendor_client(), id, encoded.data(),
                              static_cast<unsigned int>(encoded.size()), nullptr);

  FUZZ_REQUIRE(phone.replies.empty());
  FUZZ_REQUIRE(phone.unsolicited.size() <= 1);
  for (const fuzz::Bytes& frame : phone.unsolicited) check_unsolicited(frame);
  phone.unsolicited.clear();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::filesystem::create_directories(fuzz::scratch_root() / "data/vorn");
  make_file("dev/qor_hob_ram", kHobRamSize);
  make_file("dev/block/bootdevice/by-name/dhob", 0);
  setenv("QOREXT_PHONE_ROOT", fuzz::scratch_root().c_str(), 1);
  setenv("TZ", "UTC0", 1);
  fuzz::bring_up();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  fuzz::Phone phone(input);
  empty_store();
  for (size_t i = 0; i < kMaxIndications && input.remaining_bytes() > 0; ++i) indicate(phone);
  check_properties(phone);
  return 0;
}
