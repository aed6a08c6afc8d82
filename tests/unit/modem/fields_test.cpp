// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "modem/messages/services.h"
#include "platform/linux/qmi_json/json_fields.h"

namespace {

using nlohmann::json;
using qmi_idl::Direction;
using qmi_json::Bytes;
using qmi_json::FieldError;

const qmi_idl::Message& message(const qmi_idl::Service& service, Direction direction,
                                const char* name) {
  return *qmi_json::find_by_name(service, direction, name);
}

Bytes structure_of(const qmi_idl::Message& type, const json& fields) {
  Bytes structure(type.size, 0xEE);
  qmi_json::from_json(type, fields, structure);
  return structure;
}

std::string error_of(const qmi_idl::Message& type, const json& fields) {
  try {
    structure_of(type, fields);
  } catch (const FieldError& error) {
    return error.what();
  }
  return "";
}

class JsonFields : public ::testing::Test {
 protected:
  const qmi_idl::Message& plmn_name =
      message(modem::nas_service(), Direction::response, "get_plmn_name");
  const qmi_idl::Message& serving_system =
      message(modem::nas_service(), Direction::response, "get_serving_system");
  const qmi_idl::Message& sig_info =
      message(modem::nas_service(), Direction::response, "get_sig_info");
  const qmi_idl::Message& element =
      message(modem::qorext_service(), Direction::request, "element_write");
  const qmi_idl::Message& apns =
      message(modem::qorext_service(), Direction::response, "get_active_ehrpd_apn");
  const qmi_idl::Message& lte_error =
      message(modem::qorext_service(), Direction::indication, "lte_error");
};

TEST_F(JsonFields, NumbersAndBytesAreAtTheDescribedOffsets) {
  Bytes structure = structure_of(
      element, {{"rde_id", 0x01020304}, {"record", 5}, {"length", 2}, {"data", "AAbb"}});
  Bytes expected(532);
  expected[0] = 4, expected[1] = 3, expected[2] = 2, expected[3] = 1;
  expected[4] = 5;
  expected[12] = 2;
  expected[16] = 2;
  expected[20] = 0xAA, expected[21] = 0xBB;
  EXPECT_EQ(structure, expected);
  EXPECT_EQ(
      qmi_json::to_json(element, structure),
      (json{
          {"rde_id", 0x01020304}, {"record", 5}, {"offset", 0}, {"length", 2}, {"data", "aabb"}}));
}

TEST_F(JsonFields, StringsListsAndResultAreReadBackUnchanged) {
  json fields = {{"result", {{"result", 1}, {"error", 3}}},
                 {"registration_state", 1},
                 {"cs_attach_state", 2},
                 {"ps_attach_state", 1},
                 {"selected_network", 2},
                 {"radio_interfaces", {8, -1}},
                 {"mcc", 1},
                 {"mnc", 2},
                 {"network_description", "Somewhere"}};
  EXPECT_EQ(qmi_json::to_json(serving_system, structure_of(serving_system, fields)), fields);
}

TEST_F(JsonFields, NegativeNumbersAreReadBackUnchanged) {
  json fields = {{"result", {{"result", 0}, {"error", 0}}},
                 {"lte_rssi", -128},
                 {"lte_rsrq", 127},
                 {"lte_rsrp", -32768},
                 {"lte_snr", -1}};
  EXPECT_EQ(qmi_json::to_json(sig_info, structure_of(sig_info, fields)), fields);
}

TEST_F(JsonFields, AbsentTlvsAreLeftOut) {
  EXPECT_EQ(qmi_json::to_json(sig_info, Bytes(sig_info.size)),
            (json{{"result", {{"result", 0}, {"error", 0}}}}));
}

TEST_F(JsonFields, OneNamedElementMakesItsTlvPresent) {
  json fields = qmi_json::to_json(sig_info, structure_of(sig_info, {{"lte_rsrp", -90}}));
  EXPECT_EQ(fields["lte_rsrp"], -90);
  EXPECT_EQ(fields["lte_snr"], 0);
}

TEST_F(JsonFields, BytesMayBeAListOfNumbers) {
  Bytes structure = structure_of(element, {{"data", {1, 2, 255}}});
  EXPECT_EQ(qmi_json::to_json(element, structure)["data"], "0102ff");
}

TEST_F(JsonFields, UncountedBytesArePaddedWithZeros) {
  json fields = qmi_json::to_json(lte_error, structure_of(lte_error, {{"text", "4142"}}));
  EXPECT_EQ(fields["text"], "4142" + std::string(2 * 101, '0'));
}

TEST_F(JsonFields, NameOfEveryEntryIsAList) {
  json fields = qmi_json::to_json(apns, structure_of(apns, {{"first_value", {7, 8}}}));
  EXPECT_EQ(fields["first_value"], (json{7, 8, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(error_of(apns, {{"first_value", 7}}),
            "get_active_ehrpd_apn: field \"first_value\": expected a list");
  EXPECT_EQ(error_of(apns, {{"first_value", {1, 2, 3, 4, 5, 6, 7, 8, 9}}}),
            "get_active_ehrpd_apn: field \"first_value\": 9 values, expected at most 8");
}

TEST_F(JsonFields, MessageWithoutFieldsTakesNone) {
  const auto& notify = message(modem::qorext_service(), Direction::indication, "notify");
  EXPECT_TRUE(structure_of(notify, nullptr).empty());
  EXPECT_EQ(qmi_json::to_json(notify, {}), json::object());
  EXPECT_EQ(error_of(notify, {{"x", 1}}), "notify: unknown field \"x\"");
}

TEST_F(JsonFields, WrongFieldsAreReportedByName) {
  const std::string kRecord = "element_write: field \"record\": ";
  const std::string kData = "element_write: field \"data\": ";
  const std::pair<json, std::string> kCases[] = {
      {{{"typo", 1}}, "element_write: unknown field \"typo\""},
      {{{"record", -1}}, kRecord + "-1 is out of range (0 to 4294967295)"},
      {{{"record", 4294967296}}, kRecord + "4294967296 is out of range (0 to 4294967295)"},
      {{{"record", UINT64_MAX}},
       kRecord + "18446744073709551615 is out of range (0 to 4294967295)"},
      {{{"record", 1.5}}, kRecord + "expected an integer from 0 to 4294967295"},
      {{{"record", "1"}}, kRecord + "expected an integer from 0 to 4294967295"},
      {{{"data", "123"}}, kData + "expected hexadecimal digits, two for each byte"},
      {{{"data", "zz"}}, kData + "expected hexadecimal digits, two for each byte"},
      {{{"data", 7}}, kData + "expected hexadecimal digits or a list of numbers"},
      {{{"data", {256}}}, kData + "256 is out of range (0 to 255)"},
      {{{"data", std::string(1026, '0')}}, kData + "513 values, expected at most 512"},
      {json::array(), "element_write: expected the fields as a JSON object"},
  };
  for (const auto& [fields, error] : kCases) EXPECT_EQ(error_of(element, fields), error);
}

TEST_F(JsonFields, WrongStringsListsAndResultsAreReportedByName) {
  const std::string kField = "get_serving_system: field ";
  const std::pair<json, std::string> kCases[] = {
      {{{"network_description", 1}}, kField + "\"network_description\": expected a string"},
      {{{"radio_interfaces", "08"}}, kField + "\"radio_interfaces\": expected a list of numbers"},
      {{{"radio_interfaces", {128}}},
       kField + "\"radio_interfaces\": 128 is out of range (-128 to 127)"},
      {{{"result", 0}}, kField + "\"result\": expected {\"result\":...,\"error\":...}"},
      {{{"result", {{"result", 65536}, {"error", 0}}}},
       kField + "\"result\": 65536 is out of range (0 to 65535)"},
  };
  for (const auto& [fields, error] : kCases) EXPECT_EQ(error_of(serving_system, fields), error);
}

TEST(Fields, WrongUseIsRefused) {
  const auto& type = message(modem::qorext_service(), Direction::request, "element_write");
  Bytes structure(type.size);
  qmi_json::Fields fields(type, structure);
  EXPECT_THROW(fields.number("nothing"), FieldError);
  EXPECT_THROW(fields.number("data"), FieldError);
  EXPECT_THROW(fields.bytes("record"), FieldError);
  EXPECT_THROW(fields.set("record", Bytes{1}), FieldError);
  EXPECT_THROW(fields.set("data", 1), FieldError);
  EXPECT_THROW(fields.set("record", int64_t{1} << 32), FieldError);
  EXPECT_THROW(fields.set_text("data", "x"), FieldError);
  EXPECT_THROW(fields.number("rde_id", 1), FieldError);
  EXPECT_THROW(qmi_json::Fields(type, std::span(structure).first(1)), FieldError);
}

TEST(Fields, CountAboveTheCapacityIsReducedToIt) {
  const auto& type = message(modem::qorext_service(), Direction::request, "element_write");
  Bytes structure(type.size);
  structure[17] = 0xFF;
  EXPECT_EQ(qmi_json::Fields(type, structure).bytes("data").size(), 512U);
}

TEST(Hex, BlanksAreAllowedBetweenBytesOnly) {
  EXPECT_EQ(qmi_json::from_hex("01 fF  a0"), (Bytes{1, 0xFF, 0xA0}));
  EXPECT_EQ(qmi_json::from_hex(""), Bytes{});
  EXPECT_EQ(qmi_json::from_hex("0 1"), std::nullopt);
  EXPECT_EQ(qmi_json::from_hex("1"), std::nullopt);
}

}  // namespace
