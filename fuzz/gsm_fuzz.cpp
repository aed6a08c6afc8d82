// SPDX-License-Identifier: Apache-2.0
// GSM 7-bit text to UTF-8: stays inside its buffer and is the inverse of the simulated modem's
// encoder.
#include <algorithm>
#include <memory>

#include "fuzz/phone.h"
#include "fuzz/support.h"
#include "modem/state/gsm_alphabet.h"
#include "src/features/gsm_alphabet.h"

namespace {

constexpr uint8_t kCarriageReturn = 0x0D;
constexpr uint8_t kEscape = 0x1B;
constexpr uint8_t kBlank = 0x20;
constexpr uint8_t kCodes = 0x80;

// The part of the text that the UTF-8 still contains.
fuzz::Bytes kept(const fuzz::Bytes& gsm) {
  fuzz::Bytes codes;
  for (uint8_t code : gsm) {
    if (code != kCarriageReturn) codes.push_back(code == kEscape ? kBlank : code);
  }
  return codes;
}

bool is_gsm(const fuzz::Bytes& text) {
  return std::all_of(text.begin(), text.end(), [](uint8_t code) { return code < kCodes; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  fuzz::Phone phone(input);
  const fuzz::Bytes gsm = input.ConsumeBytes<uint8_t>(UINT16_MAX);

  std::unique_ptr<char[]> text(new char[utf8_limit(gsm.size()) + 1]);
  size_t length = gsm_to_utf8(gsm.data(), static_cast<uint16_t>(gsm.size()), text.get());
  FUZZ_REQUIRE(length <= utf8_limit(gsm.size()));
  FUZZ_REQUIRE(gsm.empty() || text[length] == '\0');
  if (!gsm.empty() && is_gsm(gsm)) {
    FUZZ_REQUIRE(modem::encode_gsm({text.get(), length}) == kept(gsm));
  }
  return 0;
}
