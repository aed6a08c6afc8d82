// SPDX-License-Identifier: Apache-2.0
#include "src/capture/capture.h"

#include <fcntl.h>

#include <fstream>
#include <utility>

#include "src/host/base/parent.h"
#include "src/host/host.h"
#include "src/vendor/vendor_client.h"
#include "tests/unit/product/capture_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace hob_save_test {

constexpr char kRam[] = "/dev/qor_hob_ram";
constexpr char kPartition[] = "/dev/block/bootdevice/by-name/dhob";
constexpr unsigned int kHob = 0x13;
constexpr off_t kRegionAt = 0xF540000;
constexpr size_t kRegionSize = 32768;

constexpr char kOpened[] = "log: dhob_write: qor_shared_ram open success";
constexpr char kSynced[] = "call sync";
constexpr char kSending[] = "log: dhob_write: Sending DYNHOB request to BP";
constexpr char kSent[] = "send vendor 0x13";
constexpr char kDuplicate[] = "log: dhob_write: Duplicate request: Save to HOB already in progress";

std::string varied(size_t size) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 + i / 251);
  return bytes;
}

constexpr char kSaved[] = "log: dhob_write: Save RF to HOB successful";
constexpr char kNotWritten[] = "log: dhob_write: Write to hob block failed";

class HobSave : public CapturePhone {
 protected:
  HobSave() {
    qor_ext_instance_id = 0;
    qmi_qorext_hook_client_init(handleUnsolMsg);
    trace.clear();
  }

  // A RAM device with other bytes on both sides of the region.
  void put_ram() const {
    put(kRam);
    std::filesystem::resize_file(at(kRam), kRegionAt - 1);
    std::ofstream(at(kRam), std::ios::app) << "<" << varied(kRegionSize) << ">";
  }

  void put_devices() const {
    put_ram();
    put(kPartition);
  }

  // Saves; the trace has these lines and then those of the report of this value.
  void expect_save(Lines lines, uint8_t value) {
    EXPECT_EQ(dhob_write(nullptr), nullptr);
    EXPECT_EQ(trace, lines + (Lines{kSynced, kSending, kSent}));
    EXPECT_THAT(sent_values(), ElementsAre(Bytes{value}));
  }

  std::vector<Bytes> sent_values() const {
    std::vector<Bytes> requests;
    for (const Exchange& exchange : exchanges) {
      EXPECT_EQ(exchange.id, kHob);
      EXPECT_EQ(exchange.response_length, 1u);
      requests.push_back(exchange.request);
    }
    return requests;
  }
};

TEST_F(HobSave, ReadyNoticeIsOneByteOfAllOnes) {
  EXPECT_EQ(send_hob_ready(), 0);
  EXPECT_THAT(
      trace,
      ElementsAre("log: dhob_write: Sending ready to received indications message to BP", kSent));
  EXPECT_THAT(sent_values(), ElementsAre(Bytes{0xFF}));
  EXPECT_EQ(exchanges[0].timeout_ms, 15000u);
}

TEST_F(HobSave, ReadyNoticeReturnsTheResultOfItsSend) {
  fail_send(kHob, -3);
  EXPECT_EQ(send_hob_ready(), -3);
}

TEST_F(HobSave, RequestStartsADetachedThreadAndReturnsImmediately) {
  handleUnsolMsg(vendor_client(), kHob, nullptr, 0, nullptr);
  EXPECT_THAT(logs(), ElementsAre("Handling unsol msg 19",
                                  "Unsol resp 0x13 not supported by Sprint handler."));
  ASSERT_EQ(threads.size(), 1u);
  EXPECT_EQ(threads[0].body, dhob_write);
  EXPECT_EQ(threads[0].argument, nullptr);
  EXPECT_EQ(threads[0].detach_state, PTHREAD_CREATE_DETACHED);
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(HobSave, EveryRequestStartsItsOwnThread) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(hobSaveIndHndlr(vendor_client(), kHob, nullptr, 0, nullptr), 0);
  }
  ASSERT_EQ(threads.size(), 3u);
  for (const Thread& thread : threads) EXPECT_EQ(thread.detach_state, PTHREAD_CREATE_DETACHED);
}

TEST_F(HobSave, OtherInstancesIgnoreTheRequest) {
  for (uint32_t instance : {1u, 2u, 256u, 65536u, 0xFFFFFFFFu}) {
    qor_ext_instance_id = instance;
    EXPECT_EQ(hobSaveIndHndlr(vendor_client(), kHob, nullptr, 0, nullptr), 0);
  }
  qor_ext_instance_id = 0;
  EXPECT_THAT(threads, IsEmpty());
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(HobSave, RegionIsWrittenToThePartitionByteForByte) {
  put_devices();
  expect_save({kOpened, kSaved}, 1);
  EXPECT_EQ(content(kPartition), varied(kRegionSize));
}

TEST_F(HobSave, SaveOverwritesOnlyTheStartOfThePartition) {
  put_ram();
  put(kPartition, std::string(kRegionSize + 100, 'x'));
  dhob_write(nullptr);
  EXPECT_EQ(content(kPartition), varied(kRegionSize) + std::string(100, 'x'));
}

TEST_F(HobSave, DevicesAreOpenedForReadingAndWritingAndThePartitionSynchronously) {
  put_devices();
  dhob_write(nullptr);
  EXPECT_EQ(opened.at(kRam) & O_ACCMODE, O_RDWR);
  EXPECT_EQ(opened.at(kPartition) & O_ACCMODE, O_RDWR);
  EXPECT_EQ(opened.at(kPartition) & O_SYNC, O_SYNC);
  EXPECT_EQ(opened.at(kPartition) & (O_CREAT | O_TRUNC), 0);
}

TEST_F(HobSave, MissingRamDeviceIsReportedAsZeroAfterASync) {
  put(kPartition, "before");
  expect_save({"log: dhob_write: Unable to open /dev/qor_hob_ram"}, 0);
  EXPECT_EQ(content(kPartition), "before");
}

TEST_F(HobSave, RamDeviceThatCannotBeMappedIsReportedAsZero) {
  put(kPartition, "before");
  ASSERT_EQ(mkfifo(at(kRam).c_str(), 0600), 0);
  expect_save({kOpened, "log: dhob_write: mmap failed", "log: dhob_write: base 0xf540000",
               "log: dhob_write: size 0x8000"},
              0);
  EXPECT_EQ(content(kPartition), "before");
}

TEST_F(HobSave, MissingPartitionIsReportedAsZeroAndNotCreated) {
  put_ram();
  expect_save({kOpened, "log: dhob_write: Open hob block failed"}, 0);
  EXPECT_FALSE(has(kPartition));
}

TEST_F(HobSave, FullPartitionIsReportedAsZero) {
  put_ram();
  put_link(kPartition, "/dev/full");
  expect_save({kOpened, kNotWritten}, 0);
}

TEST_F(HobSave, ShortWriteIsAFailureAndNotContinued) {
  put_devices();
  {
    FileSizeLimit limit(kRegionSize - 1);
    expect_save({kOpened, kNotWritten}, 0);
  }
  EXPECT_EQ(content(kPartition), varied(kRegionSize).substr(0, kRegionSize - 1));
}

TEST_F(HobSave, SaveWithAFailedReportHasEnded) {
  put_devices();
  fail_send(kHob, -3);
  dhob_write(nullptr);
  dhob_write(nullptr);
  EXPECT_THAT(sent_values(), ElementsAre(Bytes{1}, Bytes{1}));
}

TEST_F(HobSave, RequestDuringASaveIsRefusedImmediately) {
  put_devices();
  bool is_nested = false;
  modem = [&](const Exchange&, std::span<uint8_t>) {
    if (!std::exchange(is_nested, true)) {
      dhob_write(nullptr);
      dhob_write(nullptr);
    }
    return 0;
  };
  dhob_write(nullptr);
  EXPECT_THAT(trace, ElementsAre(kOpened, kSaved, kSynced, kSending, kSent, kDuplicate, kSent,
                                 kDuplicate, kSent));
  EXPECT_THAT(sent_values(), ElementsAre(Bytes{1}, Bytes{0}, Bytes{0}));
}

TEST_F(HobSave, NextRequestAfterASaveSavesAgain) {
  put_ram();
  dhob_write(nullptr);
  put(kPartition);
  dhob_write(nullptr);
  dhob_write(nullptr);
  EXPECT_THAT(sent_values(), ElementsAre(Bytes{0}, Bytes{1}, Bytes{1}));
}

}  // namespace hob_save_test
