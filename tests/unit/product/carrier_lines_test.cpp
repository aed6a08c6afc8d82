// SPDX-License-Identifier: Apache-2.0
// The log lines of each row of the carrier's tables, between its entry and its reply.
#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAreArray;

namespace carrier_lines_test {

const std::string kCode = "ABCDEF";

struct Logged : NamedRow {
  uint32_t id;
  Bytes payload;
  unsigned int asked;
  int rc;
  Bytes answer;
  Lines lines;
};

class CarrierLines : public CarrierPhone, public testing::WithParamInterface<Logged> {};

TEST_P(CarrierLines, AreLoggedInOrder) {
  const Logged& row = GetParam();
  answer(row.asked, row.answer);
  fail_send(row.asked, row.rc);
  offer(Request::cdma(row.id, row.payload).with_code(kCode));
  ASSERT_EQ(replies().size(), 1u);
  Lines expected =
      Lines{"log: qorext_hook_sprint_handler: ENTER "} + row.lines + reply_lines(replies()[0]);
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

Lines getting(uint32_t id) {
  return numbered_line("qorext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE ", id) +
         numbered_line("qorext_hook_sprint_get_nv_data_to_oem: EVENT VALUE ", id);
}

Lines setting(uint32_t id) {
  return numbered_line("qorext_hook_sprint_set_nv_data_from_oem: ENTER EVENT VALUE ", id);
}

Lines obsolete(uint32_t id) {
  return Lines{"debug: qorext_hook_sprint_handler: Obsolete MSG ID: " + std::to_string(id)} +
         numbered_line("qorext_hook_sprint_handle_obsolete_request: ENTER FUNCTION ", id);
}

Lines ending_in(Lines lines, const std::string& failure) {
  lines.back() = "log: " + failure;
  return lines;
}

const Lines kBand = {"log: qorext_hook_sprint_get_BC10_status:  ENTER FUNCTION  0 ",
                     "send vendor 0x101",
                     "log: qorext_hook_sprint_get_BC10_BC14_status:  status = 7 "};
const Lines kRefusedBand = {"log: qorext_hook_sprint_get_BC10_status:  ENTER FUNCTION  0 ",
                            "send vendor 0x101", "log: qor_qmi_sprint_read_band: Read Band failed.",
                            "log: qorext_hook_sprint_get_BC10_BC14_status:  status = 0 "};
const Lines kSetBand = {"log: qorext_hook_sprint_set_BC10_BC14_status:  ENTER",
                        "log: qorext_hook_sprint_set_BC10_BC14_status:  status = -2 ",
                        "send vendor 0x102"};
const Lines kRefusedSetBand = kSetBand + Lines{"log: qor_qmi_sprint_write_band: Read Band failed."};
const Lines kList = {"log: qorext_hook_sprint_set_roaming_list_segment:  ENTER  0 ",
                     "log: qorext_hook_sprint_set_roaming_list_segment:  p_prl->size (3)",
                     "log: qor_qmi_sprint_set_roaming_list_segment: data_length (3).",
                     "send vendor 0x100"};
const Lines kProfile = {"log: qorext_hook_sprint_set_Active_Profile:  ENTER  0 ",
                        "log: qorext_hook_sprint_set_Active_profile:   profile = -2 ",
                        "send vendor 0x103"};
const Lines kReset = {"log: factory_reset: EVENT VALUE 33554614, msg_len (1), reset_flag (3) ",
                      "send vendor 0x11", "log: Received factory reset result - 1"};
const Lines kFailedReset = {
    "log: factory_reset: EVENT VALUE 33554614, msg_len (2), reset_flag (255) ", "send vendor 0x11",
    "log: qor_qmi_sprint_fatory_reset: qmi_client_send_msg_sync failed (-3), result (0).",
    "log: Received factory reset result - 0"};
const Lines kGettingDdtm = {"log: qorext_hook_sprint_get_ddtm_preference:  ENTER  0 "};
const Lines kDdtm = {"log: qorext_hook_sprint_get_ddtm_preference:   ddtm = 200 "};
const Lines kNoDdtm = {"log: qorext_hook_sprint_set_ddtm_preference: Fail to write."};
const Lines kSettingDdtm = {"log: qorext_hook_sprint_set_ddtm_preference:  ENTER  0 ",
                            "log: qorext_hook_sprint_set_ddtm_preference:   ddtm = 200 "};
const Lines kRefusedSetDdtm = kSettingDdtm + failed_write_lines(10018, {200}) + kNoDdtm;
const Lines kTimer = {"log: handle_set_bsr_timer: EVENT VALUE 33554620 ", "send vendor 0x108",
                      "log: Get BSR timer result - 33"};
const Lines kRefusedTimer = {"log: handle_set_bsr_timer: EVENT VALUE 33554620 ",
                             "send vendor 0x108",
                             "log: qor_qmi_sprint_get_bsr_timer: Get BSR timer failed (9).",
                             "log: Get BSR timer result - 0"};
const Lines kSetTimer = {"log: handle_set_bsr_timer: EVENT VALUE 33554621 ", "send vendor 0x109",
                         "log: Set BSR timer result - 1"};
const Lines kRefusedSetTimer = {"log: handle_set_bsr_timer: EVENT VALUE 33554621 ",
                                "send vendor 0x109",
                                "log: qor_qmi_sprint_set_bsr_timer: Set BSR timer failed (9).",
                                "log: Set BSR timer result - 0"};
const Lines kGetOption =
    Lines{"log: handle_get_lte_option: EVENT VALUE 33554622 "} + read_lines(10017, numbered(5));
const Lines kSetOption =
    Lines{"log: handle_get_lte_option: EVENT VALUE 33554623 "} + write_lines(10017, numbered(5));
const Lines kLteData = {"log: handle_get_lte_data: EVENT VALUE 33554624 ",
                        "log: qor_qmi_sprint_get_lte_data entered ",
                        "send vendor 0x107",
                        "log: qor_qmi_sprint_get_lte_option: Get LTE service state failed (0).",
                        "send vendor 0x10a",
                        "log: qor_qmi_sprint_get_lte_ul_dl_channel: failed (0).",
                        "send nas 0x24",
                        "send nas 0x4f",
                        "send nas 0x5a"};
const Lines kUpdate = {"log: handle_update_tot_order: EVENT VALUE 33554629 ", "send vendor 0x105",
                       "log: Update TOT order result - 1"};
const Lines kRefusedUpdate = {"log: handle_update_tot_order: EVENT VALUE 33554629 ",
                              "send vendor 0x105",
                              "log: qor_qmi_sprint_update_tot_order: Update TOT order failed (9).",
                              "log: Update TOT order result - 0"};
const Lines kOverlongUpdate = {"log: handle_update_tot_order: EVENT VALUE 33554629 ",
                               "log: Update TOT order result - 0"};
const Lines kMobPRev = {"log: Enter qorext_hook_sprint_get_mob_p_pre() \n"};
const Lines kSubsidyLock = {
    "log: Enter qorext_hook_sprint_check_subsidy_lock_passwd() \n",
    "log: qorext_hook_sprint_verify_subsidy_lock: ENTER VERIFY SUBSIDY LOCK 3 ", "send dms 0x3b",
    "log:  qorext_hook_sprint_verify_subsidy_lock Success "};
const Lines kRefusedLock =
    ending_in(kSubsidyLock, " qorext_hook_sprint_verify_subsidy_lock Error = 16");
const Lines kNotSentLock =
    ending_in(kSubsidyLock, "qor_qmi_sprint_write_spc: qmi_client_send_msg_sync (-3).");
const Lines kAkey = {"log: qorext_hook_sprint_write_akey:  ENTER ",
                     "log: qcril_qmi_nas_qor_cdma_validate_and_write_akey entered ",
                     "send nas 0x5b"};
const Lines kMobPRevRead =
    read_lines(28, {6}) +
    Lines{"log: qorext_hook_sprint_get_nam_item: READ NV VALUE 0 ", "log: get mob_cai_rev 6 "};

const Lines kWriting = {"log: qorext_hook_sprint_rde_write: FUNCTION enter."};
const Lines kWritten = kWriting + write_lines(4711, numbered(3), 1, 2) +
                       Lines{"log: RDE Write success for element 4711"};
const Lines kRefusedWrite =
    kWriting + failed_write_lines(4711, {5}) + Lines{"log: RDE write error"};
const Lines kReading = {"log: qorext_hook_sprint_rde_read: Function Enter."};
const Lines kReadIn = kReading + read_lines(4711, numbered(3), 1, 2);
const Lines kRefusedRead = kReading + failed_read_lines(4711) + Lines{"log: RDE Read error"};

// The line of an operation whose message could not be sent.
Lines not_sent(const std::string& operation) {
  return {"log: qor_qmi_sprint_" + operation + ": qmi_client_send_msg_sync failed (-3)."};
}
Lines read_not_sent(uint32_t id) {
  return ending_in(failed_read_lines(id), "NV Read fail - -3, result - 0, error - 0");
}
Lines write_not_sent(uint32_t id, const Bytes& data) {
  return ending_in(failed_write_lines(id, data), "NV Write fail - -3, result - 0, error - 0");
}
Lines refused_write_of_513(uint32_t id) {
  return {write_lines(id, {})[0], "log: Data more than buffer size 513"};
}
// The line after a read whose item does not fit.
Lines too_long(uint32_t max) {
  return {"log: Input buffer is NULL or too small! max_len(" + std::to_string(max) + ")."};
}

const Lines kNotSentBand = {kBand[0], kBand[1], not_sent("read_band")[0], kRefusedBand[3]};
const Lines kResetOfThree = {kReset[0], kReset[1]};
const Lines kRefusedReset =
    kResetOfThree +
    Lines{"log: qor_qmi_sprint_fatory_reset: qmi_client_send_msg_sync failed (0), result (0).",
          "log: Received factory reset result - 0"};
const Lines kLongDdtm = kGettingDdtm + read_lines(10018, {200, 1}) + too_long(1) +
                        Lines{"log: qorext_hook_sprint_get_ddtm_preference:   ddtm = 0 "};
const Lines kNotSentSetDdtm = kSettingDdtm + write_not_sent(10018, {200}) + kNoDdtm;
const Lines kNotSentTimer = {kTimer[0], kTimer[1], not_sent("get_bsr_timer")[0], kRefusedTimer[3]};
const Lines kNotSentSetTimer = {kSetTimer[0], kSetTimer[1], not_sent("set_bsr_timer")[0],
                                kRefusedSetTimer[3]};
const Lines kGettingOption = {"log: handle_get_lte_option: EVENT VALUE 33554622 "};
const Lines kSettingOption = {"log: handle_get_lte_option: EVENT VALUE 33554623 "};
const Lines kLteUpToPlmn(kLteData.begin(), kLteData.end() - 2);
const std::string kPlmnFailed = "log: get_lte_data: QMI_NAS_GET_SERVING_SYSTEM failed ";
const Lines kApns = {"send vendor 0x106"};
const Lines kTot = {"send vendor 0x104"};
const Lines kNotSentUpdate = {kUpdate[0], kUpdate[1], not_sent("update_tot_order")[0],
                              kRefusedUpdate[3]};
const Lines kMobPRevFailed = {"log: qorext_hook_sprint_get_nam_item: READ NV VALUE 4 ",
                              "log: get mob_cai_rev 0 "};
const Lines kOtherAkeyLength = {kAkey[0], kAkey[1], "log: akey_len != sizeof(akey_req_msg.akey)"};
const Lines kWriteError = {"log: RDE write error"};
const Lines kReadError = {"log: RDE Read error"};

Bytes item(uint32_t id, const Bytes& data) {
  return read_answer(id, static_cast<uint32_t>(data.size()), data);
}

const Bytes kMinusTwo = le32(0xFFFFFFFE);
const Bytes kOutcome = le32(1);
const Bytes kNoOutcome = le32(0) + le32(9);
const Bytes kSegment = le32(3) + numbered(3);
const Bytes kAddress = le32(4711) + le32(1) + le32(2);
const Bytes kAddressZero = le32(4711) + Bytes(8);

// clang-format off
const Logged kRows[] = {
    {"Bc10",                 0x020000B0, {}, 0x101, 0, le32(0) + le32(7), getting(0x020000B0) + kBand},
    {"Bc10Refused",          0x020000B0, {}, 0x101, 0, le32(1) + le32(7), getting(0x020000B0) + kRefusedBand},
    {"Bc10NotSent",          0x020000B0, {}, 0x101, -3, {}, getting(0x020000B0) + kNotSentBand},
    {"Bc14Refused",          0x020000B2, {}, 0x101, 0, le32(1) + le32(7), getting(0x020000B2) + kRefusedBand},
    {"Bc14NotSent",          0x020000B2, {}, 0x101, -3, {}, getting(0x020000B2) + kNotSentBand},
    {"Bc14",                 0x020000B2, {}, 0x101, 0, le32(0) + le32(7), getting(0x020000B2) + kBand},
    {"SetBc10",              0x020000B1, kMinusTwo, 0x102, 0, {}, setting(0x020000B1) + kSetBand},
    {"SetBc10Refused",       0x020000B1, kMinusTwo, 0x102, 0, kRefusal, setting(0x020000B1) + kRefusedSetBand},
    {"SetBc14",              0x020000B3, kMinusTwo, 0x102, 0, {}, setting(0x020000B3) + kSetBand},
    {"SetBc10NotSent",       0x020000B1, kMinusTwo, 0x102, -3, {}, setting(0x020000B1) + kSetBand + not_sent("write_band")},
    {"SetBc14Refused",       0x020000B3, kMinusTwo, 0x102, 0, kRefusal, setting(0x020000B3) + kRefusedSetBand},
    {"SetBc14NotSent",       0x020000B3, kMinusTwo, 0x102, -3, {}, setting(0x020000B3) + kSetBand + not_sent("write_band")},
    {"RoamingListNotSent",   0x020000B4, kSegment, 0x100, -3, {}, setting(0x020000B4) + kList + not_sent("set_roaming_list_segment")},
    {"ProfileRefused",       0x020000B5, kMinusTwo, 0x103, 0, kRefusal, setting(0x020000B5) + kProfile + Lines{"log: qor_qmi_sprint_switch_proflie: failed."}},
    {"ProfileNotSent",       0x020000B5, kMinusTwo, 0x103, -3, {}, setting(0x020000B5) + kProfile + not_sent("switch_proflie")},
    {"FactoryResetRefused",  0x020000B6, {3}, 0x11, 0, {0}, kRefusedReset},
    {"DdtmNotSent",          0x020000B7, {}, 8, -3, {}, kGettingDdtm + read_not_sent(10018) + kNoDdtm},
    {"DdtmTooLong",          0x020000B7, {}, 8, 0, item(10018, {200, 1}), kLongDdtm},
    {"SecondDdtmRefused",    0x020000B9, {}, 8, 0, kRefusal, kGettingDdtm + failed_read_lines(10018) + kNoDdtm},
    {"SecondDdtmNotSent",    0x020000B9, {}, 8, -3, {}, kGettingDdtm + read_not_sent(10018) + kNoDdtm},
    {"SetDdtmNotSent",       0x020000B8, {200}, 9, -3, {}, kNotSentSetDdtm},
    {"SetSecondDdtmRefused", 0x020000BA, {200}, 9, 0, kRefusal, kRefusedSetDdtm},
    {"SetSecondDdtmNotSent", 0x020000BA, {200}, 9, -3, {}, kNotSentSetDdtm},
    {"C7Obsolete",           0x020000C7, {}, 0, 0, {}, obsolete(0x020000C7)},
    {"C8Obsolete",           0x020000C8, {}, 0, 0, {}, obsolete(0x020000C8)},
    {"C9Obsolete",           0x020000C9, {}, 0, 0, {}, obsolete(0x020000C9)},
    {"CaObsolete",           0x020000CA, {}, 0, 0, {}, obsolete(0x020000CA)},
    {"BsrTimerNotSent",      0x020000BC, {}, 0x108, -3, {}, kNotSentTimer},
    {"SetBsrTimerNotSent",   0x020000BD, le32(33), 0x109, -3, {}, kNotSentSetTimer},
    {"LteOptionRefused",     0x020000BE, {}, 8, 0, kRefusal, kGettingOption + failed_read_lines(10017)},
    {"LteOptionNotSent",     0x020000BE, {}, 8, -3, {}, kGettingOption + read_not_sent(10017)},
    {"SetLteOptionRefused",  0x020000BF, numbered(5), 9, 0, kRefusal, kSettingOption + failed_write_lines(10017, numbered(5))},
    {"SetLteOptionNotSent",  0x020000BF, numbered(5), 9, -3, {}, kSettingOption + write_not_sent(10017, numbered(5))},
    {"SetLteOptionTooLong",  0x020000BF, numbered(513), 9, 0, {}, kSettingOption + refused_write_of_513(10017)},
    {"LteDataRefused",       0x020000C0, {}, 0x24, 0, kRefusal, kLteUpToPlmn + Lines{kPlmnFailed + "(0), error (16)."}},
    {"LteDataNotSent",       0x020000C0, {}, 0x24, -3, {}, kLteUpToPlmn + Lines{kPlmnFailed + "(-3), error (0)."}},
    {"ApnsOfTwo",            0x020000C1, {}, 0x106, 0, Bytes(8) + from_hex("0201"), kApns},
    {"ApnsRefused",          0x020000C1, {}, 0x106, 0, kRefusal, kApns},
    {"ApnsNotSent",          0x020000C1, {}, 0x106, -3, {}, kApns + not_sent("get_active_ehrpd_apn")},
    {"TotOrderRefused",      0x020000C4, {}, 0x104, 0, kRefusal, kTot},
    {"TotOrderNotSent",      0x020000C4, {}, 0x104, -3, {}, kTot + not_sent("get_tot_order")},
    {"UpdateTotNotSent",     0x020000C5, le16(1), 0x105, -3, {}, kNotSentUpdate},
    {"MobPRevRefused",       0x02000007, {}, 8, 0, kRefusal, getting(0x02000007) + kMobPRev + failed_read_lines(28) + kMobPRevFailed},
    {"MobPRevNotSent",       0x02000007, {}, 8, -3, {}, getting(0x02000007) + kMobPRev + read_not_sent(28) + kMobPRevFailed},
    {"AkeyRefused",          0x02000013, numbered(26), 0x5B, 0, kRefusal, kAkey + Lines{"log: validate_and_write_akey Error = 16"}},
    {"AkeyNotSent",          0x02000013, numbered(26), 0x5B, -3, {}, kAkey + Lines{"log: validate_and_write_akey: qmi_client_send_msg_sync failed (-3)."}},
    {"AkeyOfNone",           0x02000013, {}, 0, 0, {}, kOtherAkeyLength},
    {"AkeyOf25",             0x02000013, numbered(25), 0, 0, {}, kOtherAkeyLength},
    {"AkeyOf27",             0x02000013, numbered(27), 0, 0, {}, kOtherAkeyLength},
    {"AkeyOf282",            0x02000013, numbered(282), 0, 0, {}, kOtherAkeyLength},
    {"RdeWriteNotSent",      0x02000015, kAddressZero + le32(1) + Bytes{5}, 9, -3, {}, kWriting + write_not_sent(4711, {5}) + kWriteError},
    {"RdeWriteTooLong",      0x02000015, kAddressZero + le32(513), 9, 0, {}, kWriting + refused_write_of_513(4711) + kWriteError},
    {"RdeReadNotSent",       0x02000016, kAddressZero, 8, -3, {}, kReading + read_not_sent(4711) + kReadError},
    {"RoamingList",          0x020000B4, kSegment, 0x100, 0, {}, setting(0x020000B4) + kList},
    {"RoamingListRefused",   0x020000B4, kSegment, 0x100, 0, kRefusal, setting(0x020000B4) + kList},
    {"Profile",              0x020000B5, kMinusTwo, 0x103, 0, {}, setting(0x020000B5) + kProfile},
    {"FactoryReset",         0x020000B6, {3}, 0x11, 0, {1}, kReset},
    {"FactoryResetNotSent",  0x020000B6, {3, 4}, 0x11, -3, {}, kFailedReset},
    {"Ddtm",                 0x020000B7, {}, 8, 0, item(10018, {200}), kGettingDdtm + read_lines(10018, {200}) + kDdtm},
    {"DdtmRefused",          0x020000B7, {}, 8, 0, kRefusal, kGettingDdtm + failed_read_lines(10018) + kNoDdtm},
    {"SecondDdtm",           0x020000B9, {}, 8, 0, item(10018, {200}), kGettingDdtm + read_lines(10018, {200}) + kDdtm},
    {"SetDdtm",              0x020000B8, {200}, 9, 0, {}, kSettingDdtm + write_lines(10018, {200})},
    {"SetDdtmRefused",       0x020000B8, {200}, 9, 0, kRefusal, kRefusedSetDdtm},
    {"SetSecondDdtm",        0x020000BA, {200}, 9, 0, {}, kSettingDdtm + write_lines(10018, {200})},
    {"BbObsolete",           0x020000BB, {}, 0, 0, {}, obsolete(0x020000BB)},
    {"C2Obsolete",           0x020000C2, {}, 0, 0, {}, obsolete(0x020000C2)},
    {"C3Obsolete",           0x020000C3, {}, 0, 0, {}, obsolete(0x020000C3)},
    {"C6Obsolete",           0x020000C6, {}, 0, 0, {}, obsolete(0x020000C6)},
    {"CbObsolete",           0x020000CB, {}, 0, 0, {}, obsolete(0x020000CB)},
    {"BsrTimer",             0x020000BC, {}, 0x108, 0, kOutcome + le32(0) + le32(33), kTimer},
    {"BsrTimerRefused",      0x020000BC, {}, 0x108, 0, kNoOutcome, kRefusedTimer},
    {"SetBsrTimer",          0x020000BD, le32(33), 0x109, 0, kOutcome, kSetTimer},
    {"SetBsrTimerRefused",   0x020000BD, le32(33), 0x109, 0, kNoOutcome, kRefusedSetTimer},
    {"LteOption",            0x020000BE, {}, 8, 0, item(10017, numbered(5)), kGetOption},
    {"SetLteOption",         0x020000BF, numbered(5), 9, 0, {}, kSetOption},
    {"LteData",              0x020000C0, {}, 0, 0, {}, kLteData},
    {"Apns",                 0x020000C1, {}, 0, 0, {}, {"send vendor 0x106"}},
    {"TotOrder",             0x020000C4, {}, 0, 0, {}, {"send vendor 0x104"}},
    {"UpdateTotOrder",       0x020000C5, le16(1), 0x105, 0, kOutcome, kUpdate},
    {"UpdateTotRefused",     0x020000C5, le16(1), 0x105, 0, kNoOutcome, kRefusedUpdate},
    {"UpdateTotOrderOf16",   0x020000C5, le16(16), 0x105, 0, kOutcome, kOverlongUpdate},
    {"MobPRev",              0x02000007, {}, 8, 0, item(28, {6}), getting(0x02000007) + kMobPRev + kMobPRevRead},
    {"SubsidyLock",          0x0200000A, {}, 0x3B, 0, {}, kSubsidyLock},
    {"SubsidyLockRefused",   0x0200000A, {}, 0x3B, 0, kRefusal, kRefusedLock},
    {"SubsidyLockNotSent",   0x0200000A, {}, 0x3B, -3, {}, kNotSentLock},
    {"Akey",                 0x02000013, numbered(26), 0x5B, 0, {}, kAkey},
    {"RdeWrite",             0x02000015, kAddress + le32(3) + numbered(3), 9, 0, {}, kWritten},
    {"RdeWriteRefused",      0x02000015, kAddressZero + le32(1) + Bytes{5}, 9, 0, kRefusal, kRefusedWrite},
    {"RdeRead",              0x02000016, kAddress, 8, 0, item(4711, numbered(3)), kReadIn},
    {"RdeReadRefused",       0x02000016, kAddressZero, 8, 0, kRefusal, kRefusedRead},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Row, CarrierLines, testing::ValuesIn(kRows), kNameOfRow);

}  // namespace carrier_lines_test
