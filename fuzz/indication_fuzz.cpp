// SPDX-License-Identifier: Apache-2.0
// The whole way of the modem's indications: callback, intake, handlers, unsolicited frames, KPI
// packets to the store, the hand-off block to its partition.
#include "fuzz/phone.h"
#include "fuzz/require.h"
#include "fuzz/scratch.h"
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

const std::filesystem::path& phone_root() {
  static const fuzz::Scratch scratch;
  return scratch.root();
}

void make_file(const char* path, uintmax_t size) {
  std::filesystem::create_directories((phone_root() / path).parent_path());
  fclose(fopen((phone_root() / path).c_str(), "w"));
  std::filesystem::resize_file(phone_root() / path, size);
}

// The store as a new process finds it. A packet that says nothing ends the package before it.
void empty_store() {
  const uint8_t packet[kUtilityDataSize] = {};
  vornIndHndlr(packet);
  for (const auto& entry : std::filesystem::directory_iterator(phone_root() / "data/vorn")) {
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
  auto size = phone.input.ConsumeIntegralInRange<size_t>(0, kMaxEncoded);
  auto encoded = phone.input.ConsumeBytes<uint8_t>(size);
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
  std::filesystem::create_directories(phone_root() / "data/vorn");
  make_file("dev/qor_hob_ram", kHobRamSize);
  make_file("dev/block/bootdevice/by-name/dhob", 0);
  setenv("QOREXT_PHONE_ROOT", phone_root().c_str(), 1);
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
