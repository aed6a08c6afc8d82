// SPDX-License-Identifier: Apache-2.0
#include "src/features/gsm_alphabet.h"

#include "src/host/base/log.h"

namespace {

constexpr uint8_t kCarriageReturn = 0x0D;
constexpr size_t kCodes = 128;

// clang-format off
// UTF-8 by GSM code: below 0x100 one byte, else two, the higher one first.
constexpr uint16_t kUtf8[kCodes] = {
    //  @       £       $       ¥       è       é       ù       ì
    0x0040, 0xC2A3, 0x0024, 0xC2A5, 0xC3A8, 0xC3A9, 0xC3B9, 0xC3AC,
    //  ò       Ç      LF       Ø       ø      CR       Å       å
    0xC3B2, 0xC387, 0x000A, 0xC398, 0xC3B8, 0x000D, 0xC385, 0xC3A5,
    //  Δ       _       Φ       Γ       Λ       Ω       Π       Ψ
    0xCE94, 0x005F, 0xCEA6, 0xCE93, 0xCE9B, 0xCEA9, 0xCEA0, 0xCEA8,
    //  Σ       Θ       Ξ  escape       Æ       æ       ß       É
    0xCEA3, 0xCE98, 0xCE9E, 0x0020, 0xC386, 0xC3A6, 0xC39F, 0xC389,
    // SP       !       "       #       ¤       %       &       '
    0x0020, 0x0021, 0x0022, 0x0023, 0xC2A4, 0x0025, 0x0026, 0x0027,
    //  (       )       *       +       ,       -       .       /
    0x0028, 0x0029, 0x002A, 0x002B, 0x002C, 0x002D, 0x002E, 0x002F,
    //  0       1       2       3       4       5       6       7
    0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037,
    //  8       9       :       ;       <       =       >       ?
    0x0038, 0x0039, 0x003A, 0x003B, 0x003C, 0x003D, 0x003E, 0x003F,
    //  ¡       A       B       C       D       E       F       G
    0xC2A1, 0x0041, 0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047,
    //  H       I       J       K       L       M       N       O
    0x0048, 0x0049, 0x004A, 0x004B, 0x004C, 0x004D, 0x004E, 0x004F,
    //  P       Q       R       S       T       U       V       W
    0x0050, 0x0051, 0x0052, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057,
    //  X       Y       Z       Ä       Ö       Ñ       Ü       §
    0x0058, 0x0059, 0x005A, 0xC384, 0xC396, 0xC391, 0xC39C, 0xC2A7,
    //  ¿       a       b       c       d       e       f       g
    0xC2BF, 0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067,
    //  h       i       j       k       l       m       n       o
    0x0068, 0x0069, 0x006A, 0x006B, 0x006C, 0x006D, 0x006E, 0x006F,
    //  p       q       r       s       t       u       v       w
    0x0070, 0x0071, 0x0072, 0x0073, 0x0074, 0x0075, 0x0076, 0x0077,
    //  x       y       z       ä       ö       ñ       ü       à
    0x0078, 0x0079, 0x007A, 0xC3A4, 0xC3B6, 0xC3B1, 0xC3BC, 0xC3A0,
};
// clang-format on

char* put(char* to, uint16_t utf8) {
  if (utf8 > 0xFF) *to++ = static_cast<char>(utf8 >> 8);
  *to++ = static_cast<char>(utf8 & 0xFF);
  return to;
}

}  // namespace

size_t gsm_to_utf8(const uint8_t* input, uint16_t length, char* output) {
  if (input == nullptr || output == nullptr || length == 0) {
    LOGE("Invalid parameters for GSM alphabet to UTF8 conversion, input len = %d", length);
    return 0;
  }
  char* to = output;
  for (int i = 0; i < length; ++i) {
    uint8_t code = input[i];
    if (code == kCarriageReturn) {
      LOGD("ignored CR charecter at index = %d", i);
    } else {
      to = put(to, code < kCodes ? kUtf8[code] : code);
    }
  }
  *to = '\0';
  return static_cast<size_t>(to - output);
}
