// SPDX-License-Identifier: Apache-2.0
// Running out of descriptors and disk space.
#include "tests/e2e/support/faulty_handset.h"
#include "tests/e2e/support/vorn.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

class Resources : public FaultyHandset {
 protected:
  Resources() { handset.messages_until_idle(); }

  // Uploads a package. Returns the log.
  Texts store(uint8_t package) {
    size_t before = handset.log().size();
    upload_package(package);
    EXPECT_THAT(handset.messages_until_idle(), IsEmpty());
    return handset.log().texts(before);
  }
};

const std::string kStored = "vornIndHndlr: received the last pkg of ";

TEST_F(Resources, AReadOnlyFileSystemLosesOnlyThePackagesOfItsTime) {
  switches->file_error = EROFS;
  EXPECT_THAT(store(1), Contains("vornIndHndlr: create parent dir /data/vorn failed, rc 30"));
  switches->file_error = 0;
  EXPECT_THAT(store(1), Contains(kStored + "1"));
  switches->file_error = EROFS;
  EXPECT_THAT(store(2),
              Contains("vornIndHndlr: Unable to open /data/vorn/~vorn0002.log, errno 30"));
  EXPECT_EQ(handset.serve(band_query).replies, band_reply);
  switches->file_error = 0;
  EXPECT_THAT(store(2), Contains(kStored + "2"));
}

// Four uploads of 45,000 bytes where a log can take 160,000.
TEST_F(Resources, AFullDiskIsNotLoggedAsASuccess) {
  switches->max_file_size = 160000;
  std::vector<std::string> uploads;
  Texts log;
  for (unsigned package = 1; package <= 4; ++package) {
    uploads.push_back(random_log(45000 + package));
    size_t before = handset.log().size();
    upload_in_packets(handset.modem(), package, uploads.back());
    EXPECT_THAT(handset.messages_until_idle(), IsEmpty());
    log = log + handset.log().texts(before);
  }
  VornFolder vorn(handset.phone());
  std::string name = vorn.linked(1);
  EXPECT_THAT(
      log, Contains("vorn_update_current_log: update /data/vorn/" + name + " succeed.").Times(3));
  EXPECT_THAT(
      log, Contains("vorn_update_current_log: Unable to write /data/vorn/" + name + ", errno 28"));
  EXPECT_TRUE(vorn.content(name) == uploads[0] + uploads[1] + uploads[2]);
  EXPECT_TRUE(vorn.content("~vorn0004.log") == uploads[3]);

  switches->max_file_size = 0;
  EXPECT_THAT(store(4),
              Contains("vorn_update_current_log: update /data/vorn/" + name + " succeed."));
}

TEST_F(Resources, WithoutDescriptorsEverythingExceptFilesWorks) {
  store(1);
  exhaust_descriptors(true);
  EXPECT_THAT(store(2),
              Contains("vornIndHndlr: Unable to open /data/vorn/~vorn0002.log, errno 24"));
  EXPECT_EQ(handset.serve(band_query).replies, band_reply);
  EXPECT_EQ(handset.serve(cdma(0x0200000A, {}, "246810")).replies,
            as_hex(reply(0x0200000A, 0, zeros(6))));
  handset.indicate("utils type=7 data=01");
  handset.indicate("carrier_event value=7");
  EXPECT_THAT(handset.messages_until_idle(), SizeIs(1));
  EXPECT_EQ(handset.phone().property("ril.baseband.rfcable.status"), "(none)");

  exhaust_descriptors(false);
  EXPECT_THAT(store(2), Contains(kStored + "2"));
  handset.indicate("utils type=7 data=01");
  handset.messages_until_idle();
  EXPECT_EQ(handset.phone().property("ril.baseband.rfcable.status"), "1");
}

TEST_F(Resources, WithoutDescriptorsAFailedSaveIsReportedToTheModem) {
  handset.modem_requests();
  exhaust_descriptors(true);
  size_t before = handset.log().size();
  handset.indicate("hob_save");
  EXPECT_TRUE(handset.log().wait_for("dhob_write: Sending DYNHOB request to BP", before));
  exhaust_descriptors(false);
  EXPECT_THAT(handset.log().texts(before), Contains("dhob_write: Unable to open /dev/qor_hob_ram"));
  Texts requests;
  wait_until([&] {
    requests = handset.modem_requests();
    return !requests.empty();
  });
  EXPECT_THAT(requests, testing::ElementsAre(vendor_request("hob", R"({"state":0})")));
}

}  // namespace
}  // namespace e2e
