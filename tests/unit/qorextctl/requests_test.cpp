// The bytes of every request, written out by hand.
#include <gtest/gtest.h>

#include <set>

#include "arguments.h"
#include "session.h"

namespace qorextctl {
namespace {

struct Case {
  const char* line;
  const char* hex;
};

std::string padded(const std::string& hex, size_t payload_size, size_t header_size) {
  std::string text = to_hex(*parse_hex(hex));
  text.resize(2 * (header_size + payload_size), '0');
  return text;
}

std::string built(const std::string& line) {
  auto command = parse_command(*split_line(line), false);
  return command ? to_hex(command->bytes) : command.error().message;
}

// clang-format off
constexpr Case kCases[] = {
    {"nv-read rde-id=28", "16000002 10000000 00000000 000000000000 1C000000 00000000 00000000 00000000"},
    {"nv-read rde-id=0x2713 record=1 offset=2 length=3", "16000002 10000000 00000000 000000000000 13270000 01000000 02000000 03000000"},
    {"nv-write rde-id=28 data=0A0B", "15000002 12000000 00000000 000000000000 1C000000 00000000 00000000 02000000 0A0B"},
    {"nv-write rde_id=28 length=513 data=01", "15000002 11000000 00000000 000000000000 1C000000 00000000 00000000 01020000 01"},
    {"check-spc code=123456", "0A000002 06000000 00000000 313233343536 313233343536"},
    {"read-item-28", "07000002 00000000 00000000 000000000000"},
    {"write-item-28 data=07", "08000002 01000000 00000000 000000000000 07"},
    {"read-item-37", "0F000002 00000000 00000000 000000000000"},
    {"write-item-37 data=01020304", "10000002 04000000 00000000 000000000000 01020304"},
    {"read-item-38", "17000002 00000000 00000000 000000000000"},
    {"write-item-38 data=01", "18000002 01000000 00000000 000000000000 01"},
    {"read-item-39", "19000002 00000000 00000000 000000000000"},
    {"write-item-39 data=", "1A000002 00000000 00000000 000000000000"},
    {"read-item-10003", "0D000002 00000000 00000000 000000000000"},
    {"write-item-10003 data=01", "0E000002 01000000 00000000 000000000000 01"},
    {"get-nam", "01000002 00000000 00000000 000000000000"},
    {"set-nam spc=000000 mdn=5551234567 min=5557654321 sid=4139 nid=65535 scm=42 imsi-11-12=12 imsi-mcc=311"
     " primary-a=1 primary-b=2 secondary-a=3 secondary-b=4 vocoder=6 imsi-t-mcc=312 imsi-t=310120123456789"
     " overload-class=9 new-spc=123456",
     "02000002 68000000 00000000 303030303030"
     "35353531323334353637000000000000 35353537363534333231000000000000 2B100000 FFFF0000 2A000000 31320000 33313100"
     "01000000 02000000 03000000 04000000 06000000 33313200 33313031323031323334353637383900 09000000 313233343536 0000"},
    {"set-nam spc=000000",
     "02000002 68000000 00000000 303030303030"
     "00000000000000000000000000000000 30303030303030303030000000000000 00000000 FFFF0000 2A000000 30300000 33313000"
     "1B010000 80010000 B3020000 09030000 00000000 33313000 33313030303030303030303030303000 00000000 303030303030 0000"},
    {"get-sid-nid", "03000002 00000000 00000000 000000000000"},
    {"get-bc10", "B0000002 00000000 00000000 000000000000"},
    {"set-bc10 status=1", "B1000002 04000000 00000000 000000000000 01000000"},
    {"get-bc14", "B2000002 00000000 00000000 000000000000"},
    {"set-bc14 status=-1", "B3000002 04000000 00000000 000000000000 FFFFFFFF"},
    {"set-roaming-list data=AABBCC", "B4000002 07000000 00000000 000000000000 03000000 AABBCC"},
    {"set-roaming-list size=20000 data=AA", "B4000002 05000000 00000000 000000000000 204E0000 AA"},
    {"set-profile profile=2", "B5000002 04000000 00000000 000000000000 02000000"},
    {"factory-reset", "B6000002 00000000 00000000 000000000000"},
    {"factory-reset flag=1", "B6000002 01000000 00000000 000000000000 01"},
    {"get-ddtm", "B7000002 00000000 00000000 000000000000"},
    {"set-ddtm ddtm=1", "B8000002 01000000 00000000 000000000000 01"},
    {"get-ddtm-2", "B9000002 00000000 00000000 000000000000"},
    {"set-ddtm-2 ddtm=0", "BA000002 01000000 00000000 000000000000 00"},
    {"obsolete-bb", "BB000002 00000000 00000000 000000000000"},
    {"get-bsr-timer", "BC000002 00000000 00000000 000000000000"},
    {"set-bsr-timer timer=4294967295", "BD000002 04000000 00000000 000000000000 FFFFFFFF"},
    {"get-lte-option", "BE000002 00000000 00000000 000000000000"},
    {"set-lte-option data=0102", "BF000002 02000000 00000000 000000000000 0102"},
    {"get-lte-data", "C0000002 00000000 00000000 000000000000"},
    {"get-apn", "C1000002 00000000 00000000 000000000000"},
    {"obsolete-c2", "C2000002 00000000 00000000 000000000000"},
    {"obsolete-c3", "C3000002 00000000 00000000 000000000000"},
    {"get-tot", "C4000002 00000000 00000000 000000000000"},
    {"obsolete-c6", "C6000002 00000000 00000000 000000000000"},
    {"obsolete-c7", "C7000002 00000000 00000000 000000000000"},
    {"obsolete-c8", "C8000002 00000000 00000000 000000000000"},
    {"obsolete-c9", "C9000002 00000000 00000000 000000000000"},
    {"obsolete-ca", "CA000002 00000000 00000000 000000000000"},
    {"obsolete-cb", "CB000002 00000000 00000000 000000000000"},
    {"get-mob-p-rev", "07000002 00000000 00000000 000000000000"},
    {"verify-subsidy-lock code=000000", "0A000002 00000000 00000000 303030303030"},
    {"write-akey spc=123456 akey=ABCDEFGHIJKLMNOPQRSTUVWXYZ", "13000002 1A000000 00000000 313233343536 4142434445464748494A4B4C4D4E4F505152535455565758595A"},
    {"get-call-processing", "11000002 00000000 00000000 000000000000"},
    {"get-evdo", "12000002 00000000 00000000 000000000000"},
    {"silent-reboot", "01050019 00000000"},
    {"sysinfo-filter filter=255", "0105001E 00000001 FF"},
    {"coverage text=abc", "01050020 00000004 61626300"},
    {"coverage", "01050020 00000001 00"},
    {"coverage-mode mode=2 text='a b'", "01050029 00000005 02 61206200"},
    {"tune data=010203", "0105002A 00000003 010203"},
    {"call-end-radio-state", "01050505 00000001 00"},
    {"call-end-radio-state selector=3", "01050505 00000001 03"},
    {"data-plmn", "01060001 00000000"},
    {"operator-name mcc=310 mnc=260", "010A0006 00000004 3601 0401"},
    {"pfp", "1C000002 00000000 00000000 000000000000"},
    {"generic id=0x50506", "01050506 00000000"},
    {"generic id=0x50506 type=2 data=AABB", "02050506 00000002 AABB"},
    {"cdma id=0x02000011", "11000002 00000000 00000000 000000000000"},
    {"cdma id=0x020000B5 status=7 code=123456 data=01", "B5000002 01000000 07000000 313233343536 01"},
};

// Those with a long tail of zero bytes.
struct PaddedCase {
  const char* line;
  const char* hex;
  size_t payload_size;
};
constexpr PaddedCase kPaddedCases[] = {
    {"set-sid-nid pairs=4139/1,4140/65535", "04000002 A0000000 00000000 000000000000 2B100000 01000000 2C100000 FFFF0000", 160},
    {"update-tot entries=1,0x20,3", "C5000002 3E000000 00000000 000000000000 0300 01000000 20000000 03000000", 62},
    {"update-tot count=16 entries=", "C5000002 3E000000 00000000 000000000000 1000", 62},
    {"utils type=9 data=0102", "1E000002 08010000 00000000 000000000000 09000000 02000000 0102", 264},
    {"utils type=9 length=0 data=01", "1E000002 08010000 00000000 000000000000 09000000 00000000 01", 264},
};
// clang-format on

TEST(Requests, TheBytesAreThoseThatTheDaemonExpects) {
  for (const Case& test : kCases) {
    EXPECT_EQ(built(test.line), to_hex(*parse_hex(test.hex))) << test.line;
  }
}

TEST(Requests, PayloadsOfFixedSizeAreFilledUpWithZeroBytes) {
  for (const PaddedCase& test : kPaddedCases) {
    EXPECT_EQ(built(test.line), padded(test.hex, test.payload_size, 18)) << test.line;
  }
}

TEST(Requests, EveryRowOfTheCatalogueIsBuiltAbove) {
  std::set<std::string> names;
  for (const Case& test : kCases) names.insert(split_line(test.line)->front());
  for (const PaddedCase& test : kPaddedCases) names.insert(split_line(test.line)->front());
  for (const Request& request : catalogue()) EXPECT_TRUE(names.count(request.name)) << request.name;
  EXPECT_EQ(names.size(), catalogue().size());
}

TEST(Requests, NamesAreUniqueAndDefaultsNameExistingArguments) {
  std::set<std::string> names;
  for (const Request& request : catalogue()) {
    EXPECT_TRUE(names.insert(request.name).second) << request.name;
    std::set<std::string> arguments;
    for (const Argument& argument : request.payload.arguments) {
      EXPECT_TRUE(arguments.insert(argument.field.name).second) << argument.field.name;
    }
    for (const Argument& argument : request.payload.arguments) {
      Default otherwise = argument.otherwise;
      bool names_other =
          otherwise.kind == Default::Kind::length_of || otherwise.kind == Default::Kind::same_as;
      EXPECT_TRUE(!names_other || arguments.count(otherwise.text)) << argument.field.name;
    }
  }
}

TEST(Requests, TheLongestRequestIsBuiltAndOneByteMoreIsRefused) {
  std::string data(2U * (17408 - 18), '0');
  EXPECT_EQ(built("cdma id=0x02000011 data=" + data).size(), 2u * 17408);
  EXPECT_EQ(
      built("cdma id=0x02000011 data=00" + data),
      "cdma: the request has 17409 bytes, the daemon takes at most 17408 (see: qorextctl list "
      "cdma)");
}

}  // namespace
}  // namespace qorextctl
