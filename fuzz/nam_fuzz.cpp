// SPDX-License-Identifier: Apache-2.0
// The number assignment module: reading returns the record that was written, and the items contain
// the digits that the other encoder produces.
#include "src/carrier/nam.h"

#include "fuzz/phone.h"
#include "fuzz/support.h"
#include "protocol/cdma_digits.h"
#include "src/carrier/carrier_handler.h"
#include "src/carrier/digits.h"
#include "src/vendor/rde_messages.h"

namespace {

constexpr uint32_t kMaxVocoder = 6;
constexpr size_t kMinDigits = 10;
constexpr size_t kImsiDigits = 15;

using Items = std::map<uint32_t, fuzz::Bytes>;

// A modem that stores NV items and answers all other requests with success.
int serve_items(Items& items, const fuzz::Exchange& exchange) {
  if (exchange.id != kElementWrite && exchange.id != kElementRead) return 0;
  ElementRequest request;
  memcpy(&request, exchange.request.data(), sizeof request);
  FUZZ_REQUIRE(request.length <= kElementDataSize && request.data_length == request.length);
  if (exchange.id == kElementWrite) {
    items[request.rde_id].assign(request.data, request.data + request.length);
    return 0;
  }
  const fuzz::Bytes& item = items[request.rde_id];
  ElementReadResponse response = {};
  response.rde_id = request.rde_id;
  response.length = static_cast<uint32_t>(item.size());
  response.data_length = response.length;
  std::copy(item.begin(), item.end(), response.data);
  memcpy(exchange.response.data(), &response, sizeof response);
  return 0;
}

std::string consume_digits(FuzzedDataProvider& input, size_t count) {
  std::string digits;
  while (digits.size() < count) digits += input.ConsumeIntegralInRange('0', '9');
  return digits;
}

template <size_t size>
void put(char (&to)[size], const std::string& digits) {
  memcpy(to, digits.data(), digits.size());
}

NamRecord consume_valid_record(FuzzedDataProvider& input) {
  NamRecord record = {};
  put(record.mdn, consume_digits(input, kMdnDigits));
  put(record.min, consume_digits(input, kMinDigits));
  record.hSid = input.ConsumeIntegral<uint16_t>();
  record.hNid = input.ConsumeIntegral<uint16_t>();
  record.scm = input.ConsumeIntegral<uint8_t>();
  put(record.imsi_11_12, consume_digits(input, kClassDigits));
  put(record.mcc, consume_digits(input, kMccDigits));
  record.pCdmaA = input.ConsumeIntegral<uint16_t>();
  record.pCdmaB = input.ConsumeIntegral<uint16_t>();
  record.sCdmaA = input.ConsumeIntegral<uint16_t>();
  record.sCdmaB = input.ConsumeIntegral<uint16_t>();
  record.vocoder = input.ConsumeIntegralInRange(0U, kMaxVocoder);
  put(record.imsiT, consume_digits(input, kImsiDigits));
  put(record.mccT, std::string(record.imsiT, kMccDigits));
  record.access_overload = input.ConsumeIntegral<uint8_t>();
  return record;
}

void check_digits(const std::string& imsi) {
  const char* digits = imsi.c_str();
  FUZZ_REQUIRE(encode_three_digits(digits) == protocol::encode_digits(imsi.substr(0, 3)));
  FUZZ_REQUIRE(encode_two_digits(digits) == protocol::encode_digits(imsi.substr(0, 2)));
  FUZZ_REQUIRE(encode_seven_digits(digits) == protocol::encode_seven_digits(imsi.substr(0, 7)));
  char decoded[7];
  decode_seven_digits(encode_seven_digits(digits), decoded);
  FUZZ_REQUIRE(memcmp(decoded, digits, sizeof decoded) == 0);
}

// The request ends with the record, so that a read past its end is detected.
uint32_t set_record(const NamRecord& record) {
  fuzz::Bytes request(kCdmaPayload + sizeof record);
  memcpy(&request[kCdmaPayload], &record, sizeof record);
  CarrierReply reply;
  return set_nam_info(request.data(), reply);
}

NamRecord get_record() {
  CarrierReply reply;
  FUZZ_REQUIRE(get_nam_info(nullptr, reply) == kStatusSuccess);
  FUZZ_REQUIRE(reply.length == sizeof(NamRecord));
  NamRecord record;
  memcpy(&record, reply.data, sizeof record);
  return record;
}

// Any bytes can be written, and writing or reading them twice returns the same record.
void check_any_record(FuzzedDataProvider& input) {
  NamRecord record = {};
  fuzz::phone().fill({reinterpret_cast<uint8_t*>(&record), sizeof record});
  FUZZ_REQUIRE(set_record(record) == kStatusSuccess);
  NamRecord first = get_record();
  if (input.ConsumeBool()) FUZZ_REQUIRE(set_record(record) == kStatusSuccess);
  NamRecord second = get_record();
  FUZZ_REQUIRE(memcmp(&first, &second, sizeof first) == 0);
}

void check_any_items(FuzzedDataProvider& input, Items& items) {
  for (const NamItem& item : {kMdnItem, kMin1Item, kMin2Item, kVocoderItem, kSidNidItem}) {
    auto size = input.ConsumeIntegralInRange<size_t>(0, kElementDataSize);
    items[static_cast<uint32_t>(item.id)] = input.ConsumeBytes<uint8_t>(size);
  }
  NamRecord record = get_record();
  FUZZ_REQUIRE(record.mdn[kMdnDigits] == '\0' && record.min[kMinDigits] == '\0');
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::bring_up();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  fuzz::Phone phone(input);
  Items items;
  phone.modem = [&items](const fuzz::Exchange& exchange) { return serve_items(items, exchange); };

  NamRecord record = consume_valid_record(input);
  check_digits(std::string(record.imsiT, kImsiDigits));
  FUZZ_REQUIRE(set_record(record) == kStatusSuccess);
  NamRecord stored = get_record();
  FUZZ_REQUIRE(memcmp(&stored, &record, sizeof record) == 0);
  check_any_record(input);
  check_any_items(input, items);
  return 0;
}
