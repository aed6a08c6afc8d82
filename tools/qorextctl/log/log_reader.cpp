// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/log/log_reader.h"

#include <array>
#include <charconv>

#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/frames/protocol.h"
#include "tools/qorextctl/log/log_line.h"

namespace qorextctl {

namespace {

using State = LogReader::State;

constexpr std::string_view kDumpText = "HexDump: Data ";
constexpr std::string_view kItemText = "NV Read ";
constexpr std::string_view kItemDigits = "grde - ";

// Limits the memory for a log with any number of threads. The daemon has a few.
constexpr size_t kMaxSources = 1024;

// A line before a hex dump, which gives its content.
struct DumpTitle {
  std::string_view text;
  Dump dump;
};
constexpr DumpTitle kDumpTitles[] = {
    {"handleNvRsp: response hexdump for p_respHdr->msgId", Dump::reply},
    {"qor_qmi_sprint_rde_write: hexdump len", Dump::nv_item},
    {"Gen NV Write RdeId", Dump::nv_item},
    {"Dumping modem response for QMI_DATA_PLMN_REQ_V01...", Dump::data_plmn},
    {"Dumping modem response for QMI_TUNER_REQ_V01...", Dump::tuner},
    {"qorext_hook_sprint_get_call_processing_data() hexDump...", Dump::call_processing},
    {"qorext_hook_sprint_get_evdo_data() hexDump...", Dump::evdo},
};

// Lines that contain item, record and offset.
constexpr std::string_view kAddressTexts[] = {
    "NV Write with RDE index",
    "NV Read with RDE index",
    "Gen NV Write RdeId",
};

// The start of a line up to its first personal value. The rest is masked.
constexpr std::string_view kPersonalTexts[] = {
    "qorext_hook_sprint_read_mdn_from_nv:  mdn_number incremented by 0 ",
    "qorext_hook_sprint_read_mdn_from_nv:  mdn_number ",
    "qorext_hook_sprint_read_mdn_from_nv:  nv output ",
    "qorext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I COMPLETE ",
    "qorext_hook_sprint_set_mdn_to_nv:  mdn_number ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MDN  ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MIN1  ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MIN2  ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_S1  ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_S2  ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_11_12  ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_MCC ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_MCC_T ",
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_11_12 ",
    "qorext_hook_sprint_get_nam_info: NAM INFO imsiT => ",
    "qorext_hook_sprint_get_nam_info: NAM INFO MIN => ",
    "qorext_hook_sprint_get_nam_info: NAM INFO IMSI_11_12 => ",
    "qorext_hook_sprint_get_nam_info: NAM INFO Mcc => ",
    "qorext_hook_sprint_set_nam_info:  SET NAM IMSI_MCC  ",
    "qorext_hook_sprint_set_nam_info:  SET NAM IMSI_11_12  ",
    "qorext_hook_sprint_set_nam_info:  SET NAM MIN1 ",
    "qorext_hook_sprint_set_nam_info:  SET NAM MccT ",
    "UTILS: req.req_data[0]",
    "isSpcChanged = 0, (",
    "isSpcChanged = 1, (",
};

bool starts_with(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

std::string joined(std::string_view head, std::string_view text, std::string_view rest) {
  return std::string(head).append(text).append(rest);
}

// The first three decimal numbers of a text. The daemon writes some of them as signed numbers.
std::optional<std::array<uint32_t, 3>> three_numbers(std::string_view text) {
  std::array<uint32_t, 3> numbers{};
  for (uint32_t& number : numbers) {
    size_t start = text.find_first_of("-0123456789");
    if (start == std::string_view::npos) return std::nullopt;
    int64_t value = 0;
    auto [end, error] = std::from_chars(text.data() + start, text.data() + text.size(), value);
    if (error != std::errc{}) return std::nullopt;
    number = static_cast<uint32_t>(value);
    text.remove_prefix(static_cast<size_t>(end - text.data()));
  }
  return numbers;
}

void note_title(State& state, std::string_view text) {
  for (std::string_view address : kAddressTexts) {
    if (!starts_with(text, address)) continue;
    auto numbers = three_numbers(text.substr(address.size()));
    state.address.reset();
    if (numbers) state.address = {(*numbers)[0], (*numbers)[1], (*numbers)[2]};
  }
  for (const DumpTitle& title : kDumpTitles) {
    if (starts_with(text, title.text)) state.dump = title.dump;
  }
}

// Returns "***" for digits that are not pairs, from a line that was cut.
std::string masked_digits(std::string_view digits) {
  auto bytes = parse_hex(digits);
  return bytes ? masked_hex(bytes->size()) : kMasked;
}

// The log library may cut a long line within a byte.
std::optional<Bytes> whole_bytes(std::string_view digits) {
  return parse_hex(digits.substr(0, digits.size() / 2 * 2));
}

LogEntry read_dump(const State& state, const DaemonLine& line) {
  std::string_view digits = line.text.substr(kDumpText.size());
  auto bytes = whole_bytes(digits);
  LogEntry entry;
  if (bytes) entry.content = decode_dump(state.dump, state.address, *bytes);
  bool is_open = entry.content && entry.content->frame.personal.empty();
  if (is_open || digits.empty()) {
    entry.masked = joined(line.head, line.text, "");
    return entry;
  }
  std::string masked = masked_digits(digits);
  if (entry.content) {
    DecodedFrame frame = entry.content->frame;
    mask(frame);
    masked = hex_of(frame);
  }
  entry.masked = joined(line.head, kDumpText, masked);
  return entry;
}

// For example "NV Read 28, length 1, data length 1, grde - 06". This is the item that the modem has
// returned; the line before has the one that was requested.
LogEntry read_item(const State& state, const DaemonLine& line, size_t digits_at) {
  std::string_view before = line.text.substr(0, digits_at);
  std::string_view digits = line.text.substr(digits_at);
  auto numbers = three_numbers(before.substr(kItemText.size()));
  auto bytes = whole_bytes(digits);
  LogEntry entry;
  ItemAddress address = state.address.value_or(ItemAddress{numbers ? (*numbers)[0] : 0, 0, 0});
  bool is_personal = !numbers || is_personal_item((*numbers)[0]) || is_personal_item(address.item);
  if (numbers && bytes && !bytes->empty()) {
    entry.content = decode_item(is_personal_item(address.item)
                                    ? address
                                    : ItemAddress{(*numbers)[0], address.record, address.offset},
                                *bytes);
  }
  entry.masked = is_personal ? joined(line.head, before, masked_digits(digits))
                             : joined(line.head, line.text, "");
  return entry;
}

std::string masked_text(const DaemonLine& line) {
  for (std::string_view text : kPersonalTexts) {
    if (starts_with(line.text, text)) return joined(line.head, text, kMasked);
  }
  return joined(line.head, line.text, "");
}

}  // namespace

LogEntry LogReader::read(const std::string& line) {
  auto parsed = parse_daemon_line(line);
  if (!parsed) return {line, std::nullopt};
  if (states_.size() >= kMaxSources && !states_.contains(parsed->source)) forget();
  State& state = states_[std::string(parsed->source)];
  if (starts_with(parsed->text, kDumpText)) {
    LogEntry entry = read_dump(state, *parsed);
    state = {};
    return entry;
  }
  size_t digits = parsed->text.find(kItemDigits);
  if (starts_with(parsed->text, kItemText) && digits != std::string_view::npos) {
    LogEntry entry = read_item(state, *parsed, digits + kItemDigits.size());
    state = {};
    return entry;
  }
  note_title(state, parsed->text);
  return {masked_text(*parsed), std::nullopt};
}

}  // namespace qorextctl
