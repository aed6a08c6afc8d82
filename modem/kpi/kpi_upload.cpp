// SPDX-License-Identifier: Apache-2.0
#include "modem/kpi/kpi_upload.h"

#include <errno.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "modem/messages/services.h"
#include "platform/linux/qmi_json/fields.h"

namespace modem {
namespace {

using nlohmann::json;
using qmi_transport::ScopedFd;

constexpr size_t kMaxPath = 4096;
constexpr size_t kMaxInlineLog = size_t{1} << 20;
constexpr size_t kKeptUploads = 32;

[[noreturn]] void refuse(const std::string& what) { throw std::invalid_argument(what); }

uint64_t divided_up(uint64_t value, uint64_t by) { return (value + by - 1) / by; }

// A packet must fit into the indication, and be long enough for the receiver to accept it.
uint32_t checked_size(const UploadOptions& options) {
  size_t room = kMaxKpiPayload - (options.is_headerless ? 0 : kKpiWordSize);
  size_t min = options.is_headerless ? kKpiWordSize + 1 : 1;
  size_t size = options.packet_size == 0 ? room : options.packet_size;
  if (size < min || size > room) {
    refuse(fmt::format("packet_size: {} is out of range ({} to {})", size, min, room));
  }
  return static_cast<uint32_t>(size);
}

ScopedFd open_log(const UploadOptions& options) {
  if (options.file.empty() == options.data.empty()) refuse("expected either a file or data");
  bool has_file = !options.file.empty();
  ScopedFd fd(has_file ? open(options.file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)
                       : memfd_create("kpi", MFD_CLOEXEC));
  if (!fd) refuse(fmt::format("{}: {}", options.file, strerror(errno)));
  if (has_file) return fd;
  auto size = static_cast<ssize_t>(options.data.size());
  if (write(fd.get(), options.data.data(), options.data.size()) != size) refuse(strerror(errno));
  return fd;
}

uint64_t size_of(const ScopedFd& log, const std::string& name) {
  struct stat status {};
  bool good = fstat(log.get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
  if (!good) refuse(name + ": is not a file with content");
  return static_cast<uint64_t>(status.st_size);
}

constexpr int64_t kKpiIndication = 1;  // a type of the utility indication

void append_le(Bytes& bytes, uint32_t value, size_t size) {
  for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

Bytes packet_bytes(const KpiPacket& packet) {
  Bytes bytes = {packet.package, packet.sequence, uint8_t{packet.is_last}, 0};
  append_le(bytes, static_cast<uint32_t>(packet.payload.size()), sizeof(uint16_t));
  bytes.insert(bytes.end(), packet.payload.begin(), packet.payload.end());
  return bytes;
}

}  // namespace

Bytes kpi_indication(const KpiPacket& packet) {
  static const qmi_idl::Message& message =
      *qmi_json::find_by_name(qorext_service(), qmi_idl::Direction::indication, "utils");
  Bytes structure(message.size);
  qmi_json::Fields fields(message, structure);
  fields.set("type", kKpiIndication);
  fields.set("data", packet_bytes(packet));
  return encode_packet(qmi_idl::WireType::indication, kNoTransaction, message, structure);
}

Bytes with_header(uint32_t word, std::span<const uint8_t> content) {
  Bytes payload;
  append_le(payload, word, kKpiWordSize);
  payload.insert(payload.end(), content.begin(), content.end());
  return payload;
}

void describe(Archive& archive, KpiPacketOptions& options) {
  KpiPacket& packet = options.packet;
  archive.number("package", packet.package);
  archive.number("sequence", packet.sequence);
  archive.flag("last", packet.is_last);
  options.has_header = archive.number("header", options.header);
  size_t room = kMaxKpiPayload - (options.has_header ? kKpiWordSize : 0);
  archive.hex("data", packet.payload, up_to(room));
}

Bytes kpi_indication(const KpiPacketOptions& options) {
  KpiPacket packet = options.packet;
  if (options.has_header) packet.payload = with_header(options.header, packet.payload);
  return kpi_indication(packet);
}

void describe(Archive& archive, UploadOptions& options) {
  archive.text("file", options.file, up_to(kMaxPath));
  archive.hex("data", options.data, up_to(kMaxInlineLog));
  archive.number("package", options.package);
  archive.number("packet_size", options.packet_size);
  archive.number("header", options.header);
  archive.flag("headerless", options.is_headerless);
  archive.number("lose", options.lose);
  archive.number("reorder", options.reorder);
}

UploadPlan::UploadPlan(const UploadOptions& options, uint64_t bytes)
    : packet_size_(checked_size(options)),
      bytes_(bytes),
      packets_(divided_up(bytes, packet_size_)),
      packages_(divided_up(packets_, kMaxPackagePackets)),
      last_package_((packages_ - 1) * kMaxPackagePackets) {
  // The receiver refuses a first packet with nothing after the four bytes that it reads as the
  // header word; the last package then begins one packet earlier.
  bool is_too_short =
      options.is_headerless && bytes_ - last_package_ * packet_size_ <= kKpiWordSize;
  if (is_too_short && packages_ == 1) refuse("data: a log without a header has at least 5 bytes");
  if (is_too_short) --last_package_;
  if (options.lose > packets_)
    refuse(fmt::format("lose: {} is out of range (0 to {})", options.lose, packets_));
  if (options.reorder >= packets_ && options.reorder != 0) {
    refuse(fmt::format("reorder: {} is out of range (0 to {})", options.reorder, packets_ - 1));
  }
}

UploadPlan::Place UploadPlan::place(uint64_t index) const {
  bool in_last = index >= last_package_;
  uint64_t package = in_last ? packages_ - 1 : index / kMaxPackagePackets;
  uint64_t first = in_last ? last_package_ : package * kMaxPackagePackets;
  uint64_t sequence = index - first + kFirstSequence;
  bool is_last =
      sequence == kMaxPackagePackets || index + 1 == last_package_ || index + 1 == packets_;
  uint64_t offset = index * packet_size_;
  return {static_cast<uint32_t>(package), static_cast<uint32_t>(sequence), is_last, offset,
          static_cast<uint32_t>(std::min<uint64_t>(packet_size_, bytes_ - offset))};
}

KpiUpload::KpiUpload(const UploadOptions& options)
    : options_(options),
      log_(open_log(options)),
      plan_(options, size_of(log_, options.file.empty() ? "data" : options.file)) {
  options_.data.clear();
}

uint64_t KpiUpload::reordered(uint64_t index) const {
  if (index + 1 == options_.reorder) return index + 1;
  return options_.reorder != 0 && index == options_.reorder ? index - 1 : index;
}

std::optional<Bytes> KpiUpload::packet(uint64_t index) {
  UploadPlan::Place place = plan_.place(index);
  Bytes content(place.size);
  ssize_t size = pread(log_.get(), content.data(), place.size, static_cast<off_t>(place.offset));
  if (size != static_cast<ssize_t>(place.size)) {
    fail(size < 0 ? strerror(errno) : "the log has become shorter");
    return std::nullopt;
  }
  bool has_word = place.sequence == kFirstSequence && !options_.is_headerless;
  KpiPacket packet{static_cast<uint8_t>(options_.package + place.package),
                   static_cast<uint8_t>(place.sequence), place.is_last,
                   has_word ? with_header(options_.header, content) : content};
  ++packets_;
  bytes_ += place.size;
  if (place.is_last) ++packages_;
  return kpi_indication(packet);
}

std::optional<Bytes> KpiUpload::next() {
  while (!is_over_ && next_ < plan_.packets()) {
    uint64_t index = reordered(next_++);
    if (!is_lost(index)) return packet(index);
  }
  is_over_ = true;
  return std::nullopt;
}

void KpiUpload::fail(const std::string& why) {
  is_over_ = true;
  error_ = why;
}

json KpiUpload::progress() const {
  const char* state = !error_.empty() ? "failed" : is_over_ ? "done" : "running";
  json progress = {{"state", state},
                   {"packages", packages_},
                   {"packets", packets_},
                   {"bytes", bytes_},
                   {"packet_size", plan_.packet_size()},
                   {"total_packets", plan_.packets()},
                   {"total_bytes", plan_.bytes()}};
  if (!error_.empty()) progress["error"] = error_;
  return progress;
}

uint32_t KpiUploads::add(const UploadOptions& options) {
  uploads_.push_back({last_number_ + 1, KpiUpload(options)});
  if (uploads_.size() > kKeptUploads && uploads_.front().upload.is_over()) uploads_.pop_front();
  return ++last_number_;
}

KpiUpload* KpiUploads::current() {
  auto found = std::find_if(uploads_.begin(), uploads_.end(),
                            [](const Numbered& each) { return !each.upload.is_over(); });
  return found == uploads_.end() ? nullptr : &found->upload;
}

json KpiUploads::list() const {
  json list = json::array();
  for (const Numbered& each : uploads_) {
    list.push_back(each.upload.progress());
    list.back()["upload"] = each.number;
  }
  return list;
}

}  // namespace modem
