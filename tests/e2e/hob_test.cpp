// SPDX-License-Identifier: Apache-2.0
// The modem's hand-off block, saved to its partition when the modem asks for it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/e2e/support/files.h"
#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/log_texts.h"
#include "tools/qorextctl/phone/phone_files.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;
using qorextctl::Deadline;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

constexpr size_t kPartitionSize = 65536;

constexpr char kSuccessful[] = "dhob_write: Save RF to HOB successful";
constexpr char kOpened[] = "dhob_write: qor_shared_ram open success";
constexpr char kDuplicate[] = "dhob_write: Duplicate request: Save to HOB already in progress";
constexpr char kAnswering[] = "dhob_write: Sending DYNHOB request to BP";

class Hob : public testing::Test {
 protected:
  Hob()
      : handset(Handset::off),
        ram(handset.phone().folder() + qorextctl::kHobRam),
        partition(handset.phone().folder() + qorextctl::kHobPartition) {
    put(partition, std::string(kPartitionSize, 'p'));
    handset.start_modem();
  }

  void start(unsigned instance = 0) {
    handset.start_daemon(instance);
    handset.wait_until_serving();
  }

  // Asks for a save; what it logs before the modem is told how it went.
  Texts save() {
    size_t mark = handset.log().texts().size();
    handset.modem().command("indicate hob_save");
    auto end = handset.log().wait_for(kAnswering, mark, Deadline::in(kPatience));
    EXPECT_TRUE(end);
    Texts texts = handset.log().texts(mark, end.value_or(mark));
    std::erase_if(texts, [](const std::string& text) { return !text.starts_with("dhob_write"); });
    return texts;
  }

  // That the modem is told these bytes, one behind the other since it was started, is expected.
  void expect_told(const std::string& bytes) {
    std::string told;
    for (auto deadline = Deadline::in(kPatience); told != bytes && !deadline.passed();) {
      told = handset.modem().value("state", "/state/features/hob_states");
    }
    EXPECT_EQ(told, bytes);
  }

  void put(const std::string& file, const std::string& bytes) const {
    std::ofstream(file, std::ios::binary) << bytes;
    handset.phone().give_to_daemon(file);
  }
  // The path leads elsewhere.
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

TEST_F(Hob, RegionIsEqualInThePartitionByteForByte) {
  start();
  EXPECT_THAT(save(), ElementsAre(kOpened, kSuccessful));
  expect_told("[255,1]");
  EXPECT_TRUE(content_of(partition) == region + std::string(kPartitionSize - region.size(), 'p'));
}

TEST_F(Hob, EveryRequestSavesAnew) {
  start();
  save();
  expect_told("[255,1]");
  put(partition, std::string(kPartitionSize, 'q'));
  EXPECT_THAT(save(), Contains(kSuccessful));
  expect_told("[255,1,1]");
  EXPECT_TRUE(content_of(partition).starts_with(region));
}

TEST_F(Hob, RequestsAreServedDuringASave) {
  start();
  handset.modem().command("indicate hob_save");
  EXPECT_EQ(handset.serve(cdma(0x02000014)).replies, as_hex(reply(0x02000014, 6)));
  expect_told("[255,1]");
}

TEST_F(Hob, InstanceOneTakesNoPart) {
  start(1);
  handset.modem().command("indicate hob_save");
  handset.modem().command("indicate generic");
  EXPECT_TRUE(handset.daemon().receive_unsolicited(Deadline::in(kPatience)));
  EXPECT_EQ(handset.serve(cdma(0x02000014)).replies, as_hex(reply(0x02000014, 6)));
  EXPECT_THAT(handset.modem_requests(), Not(Contains(StartsWith("qorext hob"))));
  EXPECT_THAT(handset.log().texts(), Not(Contains(StartsWith("dhob_write"))));
  EXPECT_EQ(content_of(partition), std::string(kPartitionSize, 'p'));
}

TEST_F(Hob, MissingRamDeviceIsAnsweredWithZero) {
  fs::remove(ram);
  start();
  EXPECT_THAT(save(), ElementsAre("dhob_write: Unable to open /dev/qor_hob_ram"));
  expect_told("[255,0]");
  EXPECT_EQ(content_of(partition), std::string(kPartitionSize, 'p'));
}

TEST_F(Hob, RamDeviceThatCannotBeMappedIsAnsweredWithZero) {
  put_link(ram, "/dev/null");
  start();
  EXPECT_THAT(save(), ElementsAre(kOpened, "dhob_write: mmap failed", "dhob_write: base 0xf540000",
                                  "dhob_write: size 0x8000"));
  expect_told("[255,0]");
}

TEST_F(Hob, MissingPartitionIsAnsweredWithZeroAndNotMade) {
  fs::remove(partition);
  start();
  EXPECT_THAT(save(), ElementsAre(kOpened, "dhob_write: Open hob block failed"));
  expect_told("[255,0]");
  EXPECT_FALSE(fs::exists(partition));
}

TEST_F(Hob, FullPartitionIsAnsweredWithZero) {
  put_link(partition, "/dev/full");
  start();
  EXPECT_THAT(save(), ElementsAre(kOpened, "dhob_write: Write to hob block failed"));
  expect_told("[255,0]");
}

// The limit stands in for the end of the partition; the daemon inherits it.
TEST_F(Hob, PartitionThatIsTooSmallTakesWhatFitsAndIsAFailure) {
  constexpr rlim_t kRoom = 1000;
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  rlimit limit = {kRoom, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  handset.start_daemon();
  setrlimit(RLIMIT_FSIZE, &before);
  handset.wait_until_serving();
  EXPECT_THAT(save(), ElementsAre(kOpened, "dhob_write: Write to hob block failed"));
  expect_told("[255,0]");
  EXPECT_TRUE(content_of(partition) ==
              region.substr(0, kRoom) + std::string(kPartitionSize - kRoom, 'p'));
}

// A pipe in the partition's place, so full that the save has to wait in its write.
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

  // Everything that has been written; the save comes to its end by it.
  std::string drain() {
    std::string drained;
    char buffer[4096];
    for (auto deadline = Deadline::in(kPatience);
         drained.size() < kFilling + region.size() && !deadline.passed();) {
      ssize_t size = read(pipe_.get(), buffer, sizeof buffer);
      if (size > 0) drained.append(buffer, static_cast<size_t>(size));
    }
    return drained.substr(kFilling);
  }

  // Of the 64 KiB that a pipe holds.
  static constexpr size_t kFilling = 49152;

 private:
  qorextctl::UniqueFd pipe_;
};

TEST_F(SlowPartition, SecondRequestDuringASaveIsAnsweredWithZeroAtOnce) {
  start();
  handset.modem().command("indicate hob_save");
  EXPECT_TRUE(handset.log().wait_for(kOpened, 0, Deadline::in(kPatience)));
  handset.modem().command("indicate hob_save");
  expect_told("[255,0]");
  EXPECT_TRUE(handset.log().wait_for(kDuplicate, 0, Deadline::in(kPatience)));
  EXPECT_THAT(handset.log().texts(), Not(Contains(kAnswering)));

  EXPECT_TRUE(drain() == region);
  expect_told("[255,0,1]");
}

}  // namespace
}  // namespace e2e
