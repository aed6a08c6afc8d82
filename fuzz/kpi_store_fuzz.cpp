// SPDX-License-Identifier: Apache-2.0
// Packets of the modem's KPI logs in a store whose files and clock change.
#include "src/capture/kpi_store.h"

#include "fuzz/phone.h"
#include "fuzz/support.h"
#include "src/capture/kpi_logs.h"

namespace {

namespace fs = std::filesystem;

constexpr size_t kMaxSteps = 60;
constexpr uint8_t kMaxPackages = 3;
constexpr uintmax_t kNearlyFull = 0x1E00000 - 64;  // a log that the next packets rotate
constexpr int32_t kMaxSeconds = 200000;

fs::path at(const std::string& phone_path) { return fuzz::scratch_root() / phone_path.substr(1); }
const fs::path& store_folder() {
  static const fs::path folder = at(kVornDirectory);
  return folder;
}
fs::path current_link() { return store_folder() / ".0001"; }
fs::path previous_link() { return store_folder() / ".0002"; }

// The file that an index link names; empty if there is none.
fs::path log_of(const fs::path& link) {
  std::error_code error;
  fs::path target = fs::read_symlink(link, error);
  return error ? fs::path() : at(target);
}

bool is_known_name(const std::string& name) {
  return name == ".0001" || name == ".0002" || name.starts_with("vorn_") ||
         name.starts_with("~vorn");
}

void check_folder() {
  for (const auto& entry : fs::recursive_directory_iterator(fuzz::scratch_root())) {
    if (entry.is_directory()) continue;
    FUZZ_REQUIRE(entry.path().parent_path() == store_folder());
    FUZZ_REQUIRE(is_known_name(entry.path().filename()));
  }
}

// Checks the index links after a merge. The store checks the previous log only at a rotation, so
// its link can name a deleted file.
void check_merge(bool is_complete) {
  FUZZ_REQUIRE(fs::is_regular_file(log_of(current_link())));
  fs::path previous = log_of(previous_link());
  FUZZ_REQUIRE(!is_complete || previous.empty() || fs::is_regular_file(previous));
}

class Store {
 public:
  explicit Store(FuzzedDataProvider& from) : input_(from) {}
  void step();

 private:
  void store_packet();
  void remove_file();

  FuzzedDataProvider& input_;
  KpiStore store_;
  KpiReceiver receiver_;
  bool is_complete_ = true;  // no file has been deleted
};

// The packet is in a buffer of its size, so that an overflow is detected.
void Store::store_packet() {
  auto package = input_.ConsumeIntegralInRange<uint8_t>(0, kMaxPackages);
  auto sequence = input_.ConsumeIntegralInRange<uint8_t>(0, 4);
  bool is_last = input_.ConsumeBool();
  auto payload = input_.ConsumeBytes<uint8_t>(input_.ConsumeIntegral<uint16_t>());
  KpiPacket packet = {package, sequence, is_last, static_cast<uint16_t>(payload.size()),
                      payload.data()};

  bool is_merged = false;
  fuzz::phone().on_log = [&is_merged](const std::string& line) {
    is_merged = is_merged || line.starts_with("vorn_update_current_log: update ");
  };
  KpiAction action = check_kpi_packet(receiver_, packet);
  if (action == kKpiForward) receiver_.reset();
  if (action == kKpiStore) store_kpi_packet(store_, receiver_, packet, 0);
  if (action == kKpiStoreWithoutHeader) store_kpi_packet(store_, receiver_, packet, kKpiHeaderSize);
  fuzz::phone().on_log = nullptr;
  if (is_merged) check_merge(is_complete_);
}

void Store::remove_file() {
  is_complete_ = false;
  switch (input_.ConsumeIntegralInRange(0, 4)) {
    case 0:
      fs::remove(current_link());
      break;
    case 1:
      fs::remove(previous_link());
      break;
    case 2:
      if (fs::path log = log_of(current_link()); !log.empty()) fs::remove(log);
      break;
    case 3:
      if (fs::path log = log_of(previous_link()); !log.empty()) fs::remove(log);
      break;
    default:
      fs::remove(store_folder() / "~vorn0000.log");
  }
}

void fill_current_log() {
  fs::path log = log_of(current_link());
  if (fs::is_regular_file(log)) fs::resize_file(log, kNearlyFull);
}

void Store::step() {
  switch (input_.ConsumeIntegralInRange(0, 5)) {
    case 3:
      fuzz::phone().now += input_.ConsumeIntegralInRange(-kMaxSeconds, kMaxSeconds);
      break;
    case 4:
      remove_file();
      break;
    case 5:
      fill_current_log();
      break;
    default:
      store_packet();
  }
}

void clear_store() {
  fs::remove_all(store_folder());
  fs::create_directories(store_folder().parent_path());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  setenv("QOREXT_PHONE_ROOT", fuzz::scratch_root().c_str(), 1);
  setenv("TZ", "UTC0", 1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  clear_store();
  FuzzedDataProvider input(data, size);
  fuzz::Phone phone(input);
  Store store(input);
  for (size_t i = 0; i < kMaxSteps && input.remaining_bytes() > 0; ++i) store.step();
  check_folder();
  return 0;
}
