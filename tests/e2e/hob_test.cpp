// SPDX-License-Identifier: Apache-2.0
// The modem's hand-off block, which the daemon saves to its partition at the modem's request.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/handset_fixture.h"
#include "tools/qorextctl/phone/phone_files.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

constexpr size_t kPartitionSize = 65536;

constexpr char kSuccessful[] = "dhob_write: Save RF to HOB successful";
constexpr char kOpened[] = "dhob_write: qor_shared_ram open success";
constexpr char kDuplicate[] = "dhob_write: Duplicate request: Save to HOB already in progress";
constexpr char kReporting[] = "dhob_write: Sending DYNHOB request to BP";

class Hob : public testing::Test {
 protected:
  Hob()
      : handset(Handset::off),
        ram(handset.phone().folder() + qorextctl::kHobRam),
        partition(handset.phone().folder() + qorextctl::kHobPartition) {
    put(partition, std::string(kPartitionSize, 'p'));
    handset.start_modem();
  }

  // Requests a save. Returns the log up to the report to the modem.
  Texts save() {
    size_t mark = handset.log().size();
    handset.indicate("hob_save");
    auto end = handset.log().wait_for(kReporting, mark);
    EXPECT_TRUE(end);
    Texts texts = handset.log().texts(mark, end.value_or(mark));
    std::erase_if(texts, [](const std::string& text) { return !text.starts_with("dhob_write"); });
    return texts;
  }

  // Expects a save with this log whose failure is reported.
  void expect_failed_save(const Texts& log) {
    EXPECT_EQ(save(), log);
    expect_reported("[255,0]");
  }

  // Expects these states, in order, to be reported to the modem since its start.
  void expect_reported(const std::string& states) {
    std::string reported;
    wait_until([&] {
      reported = handset.modem().value("state", "/state/features/hob_states");
      return reported == states;
    });
    EXPECT_EQ(reported, states);
  }

  void put(const std::string& file, const std::string& bytes) const {
    std::ofstream(file, std::ios::binary) << bytes;
    handset.phone().give_to_daemon(file);
  }
  static void put_link(const std::string& file, const std::string& target) {
    fs::remove(file);
    fs::create_symlink(target, file);
  }

  const std::string region = [] {
    auto bytes = qorextctl::hob_content(qorextctl::PhoneFiles().hob_seed);
    return std::string(bytes.begin(), bytes.end());
  }();
  Handset handset;
  std::string ram;
  std::string partition;
};

TEST_F(Hob, RegionIsCopiedToThePartition) {
  handset.start_serving();
  EXPECT_THAT(save(), ElementsAre(kOpened, kSuccessful));
  expect_reported("[255,1]");
  EXPECT_TRUE(content_of(partition) == region + std::string(kPartitionSize - region.size(), 'p'));
}

TEST_F(Hob, EveryRequestSavesAgain) {
  handset.start_serving();
  save();
  expect_reported("[255,1]");
  put(partition, std::string(kPartitionSize, 'q'));
  EXPECT_THAT(save(), Contains(kSuccessful));
  expect_reported("[255,1,1]");
  EXPECT_TRUE(content_of(partition).starts_with(region));
}

TEST_F(Hob, RequestsAreServedDuringASave) {
  handset.start_serving();
  handset.indicate("hob_save");
  EXPECT_EQ(handset.serve(cdma(kUnknownId)).replies, as_hex(reply(kUnknownId, 6)));
  expect_reported("[255,1]");
}

TEST_F(Hob, InstanceOneIgnoresTheRequest) {
  handset.start_serving(1);
  handset.indicate("hob_save");
  handset.indicate("generic");
  EXPECT_NE(handset.next_message(), "nothing");
  EXPECT_EQ(handset.serve(cdma(kUnknownId)).replies, as_hex(reply(kUnknownId, 6)));
  EXPECT_THAT(handset.modem_requests(), Not(Contains(StartsWith("qorext hob"))));
  EXPECT_THAT(handset.log().texts(), Not(Contains(StartsWith("dhob_write"))));
  EXPECT_EQ(content_of(partition), std::string(kPartitionSize, 'p'));
}

TEST_F(Hob, MissingRamDeviceIsReportedAsZero) {
  fs::remove(ram);
  handset.start_serving();
  expect_failed_save({"dhob_write: Unable to open /dev/qor_hob_ram"});
  EXPECT_EQ(content_of(partition), std::string(kPartitionSize, 'p'));
}

TEST_F(Hob, RamDeviceThatCannotBeMappedIsReportedAsZero) {
  put_link(ram, "/dev/null");
  handset.start_serving();
  expect_failed_save({kOpened, "dhob_write: mmap failed", "dhob_write: base 0xf540000",
                      "dhob_write: size 0x8000"});
}

TEST_F(Hob, MissingPartitionIsReportedAsZeroAndNotCreated) {
  fs::remove(partition);
  handset.start_serving();
  expect_failed_save({kOpened, "dhob_write: Open hob block failed"});
  EXPECT_FALSE(fs::exists(partition));
}

TEST_F(Hob, FullPartitionIsReportedAsZero) {
  put_link(partition, "/dev/full");
  handset.start_serving();
  expect_failed_save({kOpened, "dhob_write: Write to hob block failed"});
}

// The daemon inherits a file size limit that emulates the end of the partition.
TEST_F(Hob, PartitionThatIsTooSmallIsFilledAndReportedAsZero) {
  constexpr rlim_t kRoom = 1000;
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  rlimit limit = {kRoom, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  handset.start_daemon();
  setrlimit(RLIMIT_FSIZE, &before);
  handset.wait_until_serving();
  expect_failed_save({kOpened, "dhob_write: Write to hob block failed"});
  EXPECT_TRUE(content_of(partition) ==
              region.substr(0, kRoom) + std::string(kPartitionSize - kRoom, 'p'));
}

// The partition is a pipe that is so full that the save blocks in its write.
class SlowPartition : public Hob {
 protected:
  SlowPartition() {
    fs::remove(partition);
    EXPECT_EQ(mkfifo(partition.c_str(), 0600), 0);
    handset.phone().give_to_daemon(partition);
    pipe_ = qorextctl::UniqueFd(open(partition.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    std::string filling(kFilling, 'f');
    EXPECT_EQ(write(pipe_.get(), filling.data(), filling.size()), ssize_t{kFilling});
  }

  // Reads everything that was written, which lets the save finish.
  std::string drain() {
    std::string drained;
    char buffer[4096];
    for (Deadline deadline = time_limit();
         drained.size() < kFilling + region.size() && !deadline.passed();) {
      ssize_t size = read(pipe_.get(), buffer, sizeof buffer);
      if (size > 0) drained.append(buffer, static_cast<size_t>(size));
    }
    return drained.substr(kFilling);
  }

  // Of the 64 KiB of a pipe.
  static constexpr size_t kFilling = 49152;

 private:
  qorextctl::UniqueFd pipe_;
};

TEST_F(SlowPartition, SecondRequestDuringASaveIsReportedAsZeroImmediately) {
  handset.start_serving();
  handset.indicate("hob_save");
  EXPECT_TRUE(handset.log().wait_for(kOpened));
  handset.indicate("hob_save");
  expect_reported("[255,0]");
  EXPECT_TRUE(handset.log().wait_for(kDuplicate));
  EXPECT_THAT(handset.log().texts(), Not(Contains(kReporting)));

  EXPECT_TRUE(drain() == region);
  expect_reported("[255,0,1]");
}

}  // namespace
}  // namespace e2e
