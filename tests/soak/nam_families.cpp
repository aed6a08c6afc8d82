// SPDX-License-Identifier: Apache-2.0
// The number assignment module: one record that is fifteen items of the modem.
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr uint32_t kNamItems = 15;
constexpr uint32_t kNamItemsReadFirst = 7;
constexpr size_t kRecordSize = 104;

Record draw_record(Draws& draws) {
  auto half = [&] { return uint32_t{static_cast<uint16_t>(draws.word())}; };
  Record record{.mdn = draws.digits(draws.one_in(2) ? 10 : 15),
                .min = draws.digits(10),
                .sid = half(),
                .nid = half(),
                .scm = draws.byte(),
                .imsi_11_12 = draws.digits(2),
                .mcc = draws.digits(3),
                .primary_a = half(),
                .primary_b = half(),
                .secondary_a = half(),
                .secondary_b = half(),
                .vocoder = draws.below(7),
                .mcc_t = "",
                .imsi_t = draws.digits(15),
                .overload_class = draws.byte()};
  record.mcc_t = record.imsi_t.substr(0, 3);
  return record;
}

Case get_nam(Draws& /*draws*/, ModemModel& modem) {
  bool done = true;
  for (uint32_t i = 0; i < kNamItems; ++i) done = modem.ask("element_read").is_answered() && done;
  if (!done) return {cdma(kGet), reply(kGet, 5, zeros(kRecordSize))};
  const Nam& nam = modem.memory().nam;
  Record record = nam.record;
  record.sid = nam.pairs[0];
  record.nid = nam.pairs[1];
  return {cdma(kGet), reply(kGet, 0, record_bytes(record))};
}

// The items in the order in which they are written. Of those that are read first, the SID and NID
// pairs alone hold more than the record does: an item that cannot be read counts as zeros.
struct Step {
  bool is_read_first;
  void (*store)(Nam& nam, const Record& wanted, bool was_read);
};

void copy_part(std::string& text, const std::string& from, size_t at, size_t size) {
  text.replace(at, size, from, at, size);
}

constexpr Step kSteps[] = {
    {false,
     [](Nam& nam, const Record& wanted, bool) {
       nam.record.mdn = wanted.mdn;
       nam.record.mdn.resize(15, '0');
     }},
    {true,
     [](Nam& nam, const Record& wanted, bool) { copy_part(nam.record.min, wanted.min, 3, 7); }},
    {true,
     [](Nam& nam, const Record& wanted, bool) { copy_part(nam.record.min, wanted.min, 0, 3); }},
    {true, [](Nam& nam, const Record& wanted,
              bool) { copy_part(nam.record.imsi_t, wanted.imsi_t, 8, 7); }},
    {true, [](Nam& nam, const Record& wanted,
              bool) { copy_part(nam.record.imsi_t, wanted.imsi_t, 5, 3); }},
    {true,
     [](Nam& nam, const Record& wanted, bool was_read) {
       if (!was_read) nam.pairs.assign(kSidNidValues, 0);
       nam.pairs[0] = static_cast<uint16_t>(wanted.sid);
       nam.pairs[1] = static_cast<uint16_t>(wanted.nid);
     }},
    {false, [](Nam& nam, const Record& wanted, bool) { nam.record.scm = wanted.scm; }},
    {false,
     [](Nam& nam, const Record& wanted, bool) { nam.record.imsi_11_12 = wanted.imsi_11_12; }},
    {false, [](Nam& nam, const Record& wanted, bool) { nam.record.mcc = wanted.mcc; }},
    {false,
     [](Nam& nam, const Record& wanted, bool) {
       nam.record.primary_a = wanted.primary_a;
       nam.record.primary_b = wanted.primary_b;
     }},
    {false,
     [](Nam& nam, const Record& wanted, bool) {
       nam.record.secondary_a = wanted.secondary_a;
       nam.record.secondary_b = wanted.secondary_b;
     }},
    {true, [](Nam& nam, const Record& wanted, bool) { nam.record.vocoder = wanted.vocoder; }},
    {false,
     [](Nam& nam, const Record& wanted, bool) {
       nam.record.mcc_t = wanted.mcc_t;
       copy_part(nam.record.imsi_t, wanted.imsi_t, 0, 3);
     }},
    {false, [](Nam& nam, const Record& wanted,
               bool) { copy_part(nam.record.imsi_t, wanted.imsi_t, 3, 2); }},
    {true, [](Nam& nam, const Record& wanted,
              bool) { nam.record.overload_class = wanted.overload_class; }},
};
static_assert(std::size(kSteps) == kNamItems);

bool store_record(const Record& record, ModemModel& modem) {
  bool done = true;
  for (const Step& step : kSteps) {
    bool was_read = step.is_read_first && modem.ask("element_read").is_answered();
    Exchange write = modem.ask("element_write");
    if (write.is_served) step.store(modem.memory().nam, record, was_read);
    done = write.is_answered() && done;
  }
  return done;
}

// The code in the request's header allows a new one, when that is another one and all digits.
bool change_spc(const std::string& code, const std::string& new_spc, ModemModel& modem) {
  bool is_wanted = new_spc != code && new_spc.find_first_not_of("0123456789") == std::string::npos;
  if (!is_wanted) return true;
  Exchange exchange = modem.ask("write_spc");
  std::string& spc = modem.memory().nam.spc;
  bool is_allowed = spc == code;
  if (exchange.is_served && is_allowed) spc = new_spc;
  return exchange.is_answered() && is_allowed;
}

std::string draw_new_spc(Draws& draws, const std::string& code) {
  if (draws.one_in(2)) return code;
  return draws.one_in(3) ? draws.letters(6) : draws.digits(6);
}

Case set_nam(Draws& draws, ModemModel& modem) {
  if (draws.one_in(50)) return {cdma(kSet), reply(kSet, 6)};
  Record record = draw_record(draws);
  std::string code = draws.one_in(10) ? draw_code(draws) : modem.memory().nam.spc;
  std::string new_spc = draw_new_spc(draws, code);
  Bytes request = cdma(kSet, record_bytes(record, new_spc), code);
  bool is_stored = store_record(record, modem);
  bool is_changed = change_spc(code, new_spc, modem);
  return {request, echo(request, status_of(is_stored && is_changed))};
}

Case get_pairs(Draws& /*draws*/, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000003;
  bool done = modem.ask("element_read").is_answered();
  Bytes values;
  for (uint16_t value : modem.memory().nam.pairs) values = values + le32(done ? value : 0);
  return {cdma(kId), reply(kId, status_of(done), values)};
}

Case set_pairs(Draws& draws, ModemModel& modem) {
  Bytes request = cdma(0x02000004, draws.bytes(4 * kSidNidValues), draw_code(draws));
  Exchange exchange = modem.ask("element_write");
  for (size_t i = 0; exchange.is_served && i < kSidNidValues; ++i) {
    modem.memory().nam.pairs[i] = static_cast<uint16_t>(qorextctl::load_le(request, 18 + 4 * i, 2));
  }
  return {request, echo(request, status_of(exchange.is_answered()))};
}

constexpr Family kNamFamilies[] = {
    {"NAM get", 2, get_nam, {{"element_read", kNamItems}}},
    {"NAM set",
     2,
     set_nam,
     {{"element_read", kNamItemsReadFirst}, {"element_write", kNamItems}, {"write_spc"}}},
    {"SID/NID get", 2, get_pairs, {{"element_read"}}},
    {"SID/NID set", 2, set_pairs, {{"element_write"}}},
};

}  // namespace

std::span<const Family> nam_families() { return kNamFamilies; }

}  // namespace soak
