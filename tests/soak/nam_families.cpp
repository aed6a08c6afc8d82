// SPDX-License-Identifier: Apache-2.0
// The number assignment module: one record from fifteen items of the modem.
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr uint32_t kNamItems = 15;
constexpr uint32_t kNamItemsReadFirst = 7;
constexpr size_t kRecordSize = 104;

Record random_record(Random& random) {
  auto u16 = [&] { return uint32_t{static_cast<uint16_t>(random.word())}; };
  Record record{.mdn = random.digits(random.one_in(2) ? 10 : 15),
                .min = random.digits(10),
                .sid = u16(),
                .nid = u16(),
                .scm = random.byte(),
                .imsi_11_12 = random.digits(2),
                .mcc = random.digits(3),
                .primary_a = u16(),
                .primary_b = u16(),
                .secondary_a = u16(),
                .secondary_b = u16(),
                .vocoder = random.below(7),
                .mcc_t = "",
                .imsi_t = random.digits(15),
                .overload_class = random.byte()};
  record.mcc_t = record.imsi_t.substr(0, 3);
  return record;
}

Case get_nam(Random& /*random*/, ModemModel& modem) {
  bool done = true;
  for (uint32_t i = 0; i < kNamItems; ++i)
    done = modem.request("element_read").is_answered() && done;
  if (!done) return {cdma(kNamGet), reply(kNamGet, 5, zeros(kRecordSize))};
  const Nam& nam = modem.memory().nam;
  Record record = nam.record;
  record.sid = nam.pairs[0];
  record.nid = nam.pairs[1];
  return {cdma(kNamGet), reply(kNamGet, 0, record_bytes(record))};
}

// The items in the order of writing. An item that is read first and cannot be read counts as zeros.
// Only the SID and NID pairs hold more than the record does.
struct Step {
  bool is_read_first;
  void (*store)(Nam& nam, const Record& from, bool was_read);
};

void copy_part(std::string& text, const std::string& from, size_t at, size_t size) {
  text.replace(at, size, from, at, size);
}

void copy_imsi(Nam& nam, const Record& from, size_t at, size_t size) {
  copy_part(nam.record.imsi_t, from.imsi_t, at, size);
}

std::string whole_mdn(const Record& record) {
  std::string mdn = record.mdn;
  mdn.resize(15, '0');
  return mdn;
}

void store_pair(Nam& nam, const Record& from, bool was_read) {
  if (!was_read) nam.pairs.assign(kSidNidValues, 0);
  nam.pairs[0] = static_cast<uint16_t>(from.sid);
  nam.pairs[1] = static_cast<uint16_t>(from.nid);
}

void store_primary_channels(Nam& nam, const Record& from, bool) {
  nam.record.primary_a = from.primary_a;
  nam.record.primary_b = from.primary_b;
}

void store_secondary_channels(Nam& nam, const Record& from, bool) {
  nam.record.secondary_a = from.secondary_a;
  nam.record.secondary_b = from.secondary_b;
}

void store_imsi_t_mcc(Nam& nam, const Record& from, bool) {
  nam.record.mcc_t = from.mcc_t;
  copy_imsi(nam, from, 0, 3);
}

constexpr Step kSteps[] = {
    {false, [](Nam& nam, const Record& from, bool) { nam.record.mdn = whole_mdn(from); }},
    {true, [](Nam& nam, const Record& from, bool) { copy_part(nam.record.min, from.min, 3, 7); }},
    {true, [](Nam& nam, const Record& from, bool) { copy_part(nam.record.min, from.min, 0, 3); }},
    {true, [](Nam& nam, const Record& from, bool) { copy_imsi(nam, from, 8, 7); }},
    {true, [](Nam& nam, const Record& from, bool) { copy_imsi(nam, from, 5, 3); }},
    {true, store_pair},
    {false, [](Nam& nam, const Record& from, bool) { nam.record.scm = from.scm; }},
    {false, [](Nam& nam, const Record& from, bool) { nam.record.imsi_11_12 = from.imsi_11_12; }},
    {false, [](Nam& nam, const Record& from, bool) { nam.record.mcc = from.mcc; }},
    {false, store_primary_channels},
    {false, store_secondary_channels},
    {true, [](Nam& nam, const Record& from, bool) { nam.record.vocoder = from.vocoder; }},
    {false, store_imsi_t_mcc},
    {false, [](Nam& nam, const Record& from, bool) { copy_imsi(nam, from, 3, 2); }},
    {true,
     [](Nam& nam, const Record& from, bool) { nam.record.overload_class = from.overload_class; }},
};
static_assert(std::size(kSteps) == kNamItems);

bool store_record(const Record& record, ModemModel& modem) {
  bool done = true;
  for (const Step& step : kSteps) {
    bool was_read = step.is_read_first && modem.request("element_read").is_answered();
    Exchange write = modem.request("element_write");
    if (write.is_served) step.store(modem.memory().nam, record, was_read);
    done = write.is_answered() && done;
  }
  return done;
}

// Writes the new code if it consists of digits and differs from the code in the request's header.
bool change_spc(const std::string& code, const std::string& new_spc, ModemModel& modem) {
  bool is_change = new_spc != code && new_spc.find_first_not_of("0123456789") == std::string::npos;
  if (!is_change) return true;
  Exchange exchange = modem.request("write_spc");
  std::string& spc = modem.memory().nam.spc;
  bool is_allowed = spc == code;
  if (exchange.is_served && is_allowed) spc = new_spc;
  return exchange.is_answered() && is_allowed;
}

std::string random_new_spc(Random& random, const std::string& code) {
  if (random.one_in(2)) return code;
  return random.one_in(3) ? random.letters(6) : random.digits(6);
}

Case set_nam(Random& random, ModemModel& modem) {
  if (random.one_in(50)) return {cdma(kNamSet), reply(kNamSet, 6)};
  Record record = random_record(random);
  std::string code = random.one_in(10) ? random_code(random) : modem.memory().nam.spc;
  std::string new_spc = random_new_spc(random, code);
  Bytes request = cdma(kNamSet, record_bytes(record, new_spc), code);
  bool is_stored = store_record(record, modem);
  bool is_changed = change_spc(code, new_spc, modem);
  return {request, echo(request, status_of(is_stored && is_changed))};
}

Case get_pairs(Random& /*random*/, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000003;
  bool done = modem.request("element_read").is_answered();
  Bytes values;
  for (uint16_t value : modem.memory().nam.pairs) values = values + le32(done ? value : 0);
  return {cdma(kId), reply(kId, status_of(done), values)};
}

Case set_pairs(Random& random, ModemModel& modem) {
  Bytes request = cdma(0x02000004, random.bytes(4 * kSidNidValues), random_code(random));
  Exchange exchange = modem.request("element_write");
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
