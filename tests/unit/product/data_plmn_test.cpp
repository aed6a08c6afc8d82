// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/product/feature_phone.h"

namespace {

constexpr uint32_t kDataPlmn = 0x60001;
constexpr unsigned int QMI_DATA_PLMN_REQ_V01 = 0x16;

class DataPlmn : public FeaturePhone {};

TEST_F(DataPlmn, RecordIsAnsweredWithoutAHeader) {
  Bytes record = numbered(568);
  answer(QMI_DATA_PLMN_REQ_V01, record);
  ask(Request::generic(kDataPlmn));
  EXPECT_EQ(trace,
            (Lines{"send vendor 0x16", "log: Dumping modem response for QMI_DATA_PLMN_REQ_V01...",
                   "log: HexDump: Data " + hex(record), "reply: " + hex(record)}));
}

TEST_F(DataPlmn, NothingOfTheRequestIsUsed) {
  ask(generic_claiming(0xFFFFFFFF, kDataPlmn, numbered(40)));
  EXPECT_EQ(sent().request, Bytes(4));
  EXPECT_EQ(sent().response_length, 568u);
}

TEST_F(DataPlmn, FailedSendIsAnsweredWithZeros) {
  fail_send(QMI_DATA_PLMN_REQ_V01, -3);
  answer(QMI_DATA_PLMN_REQ_V01, numbered(568));
  ask(Request::generic(kDataPlmn));
  EXPECT_EQ(trace, (Lines{"send vendor 0x16", "log: Sending QMI_DATA_PLMN_REQ_V01 failed!",
                          "reply: " + hex(Bytes(568))}));
}

}  // namespace
