// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/carrier_indications.h"

#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;

namespace carrier_indications_test {

constexpr unsigned int kLteError = 0x10B;
constexpr unsigned int kCarrierEvent = 0x12;

const std::string kOutOfMemory = "log: send_unsol_response: out of memory!";

const Bytes kText = from_hex("01 0000 02") + numbered(99);

// The bytes between the values are the structure's padding.
const Bytes kLteErrorStructure =
    le32(0x11223344) + from_hex("55 EEEEEE") + le32(0x66778899) + kText + from_hex("EE");
const Bytes kLteErrorData = from_hex("44332211 55 99887766") + kText;

class CarrierIndications : public ServingPhone {
 protected:
  int offer(unsigned int id) {
    return qor_qmi_sprint_hook_ind_cb(vendor_client(), id, encoded.data(),
                                      static_cast<unsigned int>(encoded.size()), nullptr);
  }
};

TEST_F(CarrierIndications, LteErrorIsForwardedPacked) {
  decode_to(kLteError, kLteErrorStructure);
  EXPECT_EQ(offer(kLteError), 0);
  std::string frame = cdma_event(0x020001B1, kLteErrorData);
  EXPECT_THAT(trace, ElementsAre("call decode 0x10b", "unsol: " + frame));
  EXPECT_EQ(frame.size(), 2u * 140);
}

TEST_F(CarrierIndications, EventIsForwardedAs32Bits) {
  for (uint16_t value : std::vector<uint16_t>{0, 1, 0x1234, 0x8000}) {
    decode_to(kCarrierEvent, le16(value));
    trace.clear();
    EXPECT_EQ(offer(kCarrierEvent), 0);
    std::string frame = cdma_event(0x020001B0, le16(value) + Bytes(2));
    EXPECT_THAT(trace, ElementsAre("call decode 0x12", "unsol: " + frame));
    EXPECT_EQ(frame.size(), 2u * 32);
  }
}

TEST_F(CarrierIndications, EventOfAllOnesIsExtendedWithZeros) {
  decode_to(kCarrierEvent, le16(0xFFFF));
  offer(kCarrierEvent);
  EXPECT_THAT(unsolicited(), ElementsAre("00000000 14000000 B0010002 04000000 00000000 000000000000"
                                         "FFFF0000 0000"_hex));
}

TEST_F(CarrierIndications, IndicationThatCannotBeDecodedIsHandledAndDropped) {
  decode_to(kLteError, kLteErrorStructure);
  for (auto [id, line] :
       {std::pair{kLteError, "call decode 0x10b"}, {kCarrierEvent, "call decode 0x12"}}) {
    for (int rc : {-1, -5, 3}) {
      fail_decode(id, rc);
      trace.clear();
      EXPECT_EQ(offer(id), 0);
      EXPECT_THAT(trace, ElementsAre(line,
                                     "log: qor_qmi_sprint_hook_ind_cb: "
                                     "qmi_client_message_decode Failed(" +
                                         std::to_string(rc) + ")."));
    }
  }
}

TEST_F(CarrierIndications, AnyOtherIndicationIsDeclined) {
  for (unsigned int id : {0x0u, 0x1u, 0xAu, 0xFu, 0x11u, 0x13u, 0x16u, 0x10Au, 0x10Cu, 0x1012u}) {
    trace.clear();
    EXPECT_EQ(offer(id), -1) << id;
    EXPECT_THAT(trace,
                ElementsAre("debug: qor_qmi_sprint_hook_ind_cb: Unknown Indication from Modem."));
  }
}

TEST_F(CarrierIndications, NullLteErrorIsForwardedAsZeros) {
  convert_lte_error_to_ril_format(nullptr);
  EXPECT_THAT(trace, ElementsAre("log: convert_lte_error_to_ril_format: parameter is null!",
                                 "unsol: " + cdma_event(0x020001B1, Bytes(112))));
}

TEST_F(CarrierIndications, ValueIsForwardedWhole) {
  send_unsol_response(0x89ABCDEF);
  EXPECT_THAT(trace, ElementsAre("unsol: " + cdma_event(0x020001B0, from_hex("EFCDAB89"))));
}

TEST_F(CarrierIndications, AreDroppedAndLoggedWithoutMemory) {
  allocations_left = 0;
  EXPECT_EQ(offer(kLteError), 0);
  EXPECT_EQ(offer(kCarrierEvent), 0);
  convert_lte_error_to_ril_format(nullptr);
  EXPECT_THAT(
      trace, ElementsAre("call decode 0x10b", kOutOfMemory, "call decode 0x12", kOutOfMemory,
                         "log: convert_lte_error_to_ril_format: parameter is null!", kOutOfMemory));
}

TEST_F(CarrierIndications, FailedWriteIsLoggedAndNotRepeated) {
  write_errnos = {EPIPE};
  EXPECT_EQ(offer(kLteError), 0);
  EXPECT_EQ(offer(kCarrierEvent), 0);
  EXPECT_THAT(trace, ElementsAre("call decode 0x10b", "log: Write to parent failed 32",
                                 "call decode 0x12", "log: Write to parent failed 32"));
}

}  // namespace carrier_indications_test
