// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/modem/modem_test.h"

namespace {

class Nv : public ModemTest {
 protected:
  json read(uint32_t rde_id, uint32_t offset = 0, uint32_t length = 0, uint32_t record = 0) {
    return ask_qorext(
        "element_read",
        {{"rde_id", rde_id}, {"record", record}, {"offset", offset}, {"length", length}});
  }
  json write(uint32_t rde_id, const std::string& hex, uint32_t offset = 0, uint32_t record = 0) {
    return ask_qorext("element_write", {{"rde_id", rde_id},
                                        {"record", record},
                                        {"offset", offset},
                                        {"length", hex.size() / 2},
                                        {"data", hex}})["result"];
  }
};

TEST_F(Nv, ReadWithoutALengthReturnsTheWholeItem) {
  json answer = read(32);
  EXPECT_EQ(answer["result"], success());
  EXPECT_EQ(answer["rde_id"], 32);
  EXPECT_EQ(answer["length"], 6);
  EXPECT_EQ(answer["data"], "303030303030");
}

TEST_F(Nv, ReadWithALengthStartsAtTheOffset) {
  write(5000, "000102030405");
  json answer = read(5000, 2, 3);
  EXPECT_EQ(answer["offset"], 2);
  EXPECT_EQ(answer["length"], 3);
  EXPECT_EQ(answer["data"], "020304");
}

TEST_F(Nv, ReadStopsAtTheEndOfTheItem) {
  write(5000, "000102030405");
  EXPECT_EQ(read(5000, 4, 100)["data"], "0405");
  EXPECT_EQ(read(5000, 0, 100)["length"], 6);
  json beyond = read(5000, 6, 1);
  EXPECT_EQ(beyond["result"], success());
  EXPECT_EQ(beyond["length"], 0);
  EXPECT_EQ(read(5000, UINT32_MAX, UINT32_MAX)["data"], "");
}

TEST_F(Nv, UnknownItemIsNotProvisioned) { EXPECT_EQ(read(4711)["result"], result(1, 16)); }

TEST_F(Nv, RecordsOfAnItemAreSeparate) {
  EXPECT_EQ(write(5000, "aa", 0, 1), success());
  EXPECT_EQ(write(5000, "bb", 0, 2), success());
  EXPECT_EQ(read(5000, 0, 0, 1)["data"], "aa");
  EXPECT_EQ(read(5000, 0, 0, 2)["data"], "bb");
  EXPECT_EQ(read(5000)["result"], result(1, 16));
}

TEST_F(Nv, WriteAfterTheEndFillsTheGapWithZeros) {
  write(5000, "ff");
  EXPECT_EQ(write(5000, "0102", 3), success());
  EXPECT_EQ(read(5000)["data"], "ff00000102");
}

TEST_F(Nv, WriteInsideLeavesTheRest) {
  write(5000, "0102030405");
  write(5000, "aabb", 1);
  EXPECT_EQ(read(5000)["data"], "01aabb0405");
}

TEST_F(Nv, ItemOf512BytesIsStoredAndALongerOneRefused) {
  std::string full(1024, 'a');
  EXPECT_EQ(write(5000, full), success());
  EXPECT_EQ(read(5000)["data"], full);
  EXPECT_EQ(write(5000, "00", 512), result(1, 48));
  EXPECT_EQ(write(5001, full, 1), result(1, 48));
  EXPECT_EQ(read(5001)["result"], result(1, 16));
}

TEST_F(Nv, WriteWithAWrongLengthIsRefused) {
  json answer = ask_qorext("element_write", {{"rde_id", 5000}, {"length", 3}, {"data", "0102"}});
  EXPECT_EQ(answer["result"], result(1, 48));
  EXPECT_EQ(read(5000)["result"], result(1, 16));
}

TEST_F(Nv, FactoryNamIsEncodedAsOnTheAirInterface) {
  // 9135550142: area code 913, then 555, 0, 142; the MDN's zero is 10.
  EXPECT_EQ(read(8)["data"], "000a0901030505050a0104020000000000");
  EXPECT_EQ(read(26)["data"], "0000002203");          // 913 - 111 = 802
  EXPECT_EQ(read(25)["data"], "00000000001f286f00");  // 444 << 14 | 10 << 10 | 31
  EXPECT_EQ(read(17)["data"], "00d100");              // 310 is 3 1 10, less 111: 209
  EXPECT_EQ(read(16)["data"], "0063");                // 00 is 99
  EXPECT_EQ(read(20)["data"], read(17)["data"]);
  EXPECT_EQ(read(21)["data"], read(25)["data"]);
  EXPECT_EQ(read(22)["data"], read(26)["data"]);
  EXPECT_EQ(read(18)["data"], read(16)["data"]);
}

TEST_F(Nv, FactoryNamItemsHaveTheirLengths) {
  const std::pair<uint32_t, int> kLengths[] = {
      {8, 17}, {25, 9}, {26, 5}, {21, 9}, {22, 5}, {15, 81}, {36, 1}, {16, 2}, {17, 3},
      {29, 5}, {31, 5}, {30, 8}, {20, 3}, {18, 2}, {2, 3},   {28, 1}, {32, 6}};
  for (auto [item, length] : kLengths) {
    EXPECT_EQ(read(item)["length"], length) << "item " << item;
  }
}

TEST_F(Nv, FactoryHasTheItemsThatTheDaemonReads) {
  for (uint32_t item : {10017U, 10018U, 8029U, 8028U, 53U, 41U, 37U, 38U, 39U, 10003U}) {
    EXPECT_EQ(read(item)["result"], success()) << "item " << item;
  }
  EXPECT_EQ(read(8029)["data"], qmi_json::to_hex(Bytes{'Q', 'O', 'R', '-', 'F', 'S', 'G', '-', '0',
                                                       '1', '.', '0', '2', '.', '0', '3', 0}));
}

}  // namespace
