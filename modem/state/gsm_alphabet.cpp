// SPDX-License-Identifier: Apache-2.0
#include "modem/state/gsm_alphabet.h"

#include <algorithm>
#include <iterator>

namespace modem {
namespace {

// By code; 0x1B, the escape to the extension table, is written as the control character ESC.
constexpr std::string_view kCharacters[] = {
    "@", "£", "$",  "¥", "è", "é", "ù", "ì", "ò", "Ç", "\n", "Ø",    "ø", "\r", "Å", "å",
    "Δ", "_", "Φ",  "Γ", "Λ", "Ω", "Π", "Ψ", "Σ", "Θ", "Ξ",  "\x1B", "Æ", "æ",  "ß", "É",
    " ", "!", "\"", "#", "¤", "%", "&", "'", "(", ")", "*",  "+",    ",", "-",  ".", "/",
    "0", "1", "2",  "3", "4", "5", "6", "7", "8", "9", ":",  ";",    "<", "=",  ">", "?",
    "¡", "A", "B",  "C", "D", "E", "F", "G", "H", "I", "J",  "K",    "L", "M",  "N", "O",
    "P", "Q", "R",  "S", "T", "U", "V", "W", "X", "Y", "Z",  "Ä",    "Ö", "Ñ",  "Ü", "§",
    "¿", "a", "b",  "c", "d", "e", "f", "g", "h", "i", "j",  "k",    "l", "m",  "n", "o",
    "p", "q", "r",  "s", "t", "u", "v", "w", "x", "y", "z",  "ä",    "ö", "ñ",  "ü", "à",
};
static_assert(std::size(kCharacters) == 128);

}  // namespace

std::optional<qmi_json::Bytes> encode_gsm(std::string_view utf8) {
  qmi_json::Bytes encoded;
  while (!utf8.empty()) {
    const auto* found =
        std::find_if(std::begin(kCharacters), std::end(kCharacters),
                     [utf8](std::string_view one) { return utf8.substr(0, one.size()) == one; });
    if (found == std::end(kCharacters)) return std::nullopt;
    encoded.push_back(static_cast<uint8_t>(found - kCharacters));
    utf8.remove_prefix(found->size());
  }
  return encoded;
}

}  // namespace modem
