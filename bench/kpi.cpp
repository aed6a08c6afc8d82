// SPDX-License-Identifier: Apache-2.0
// The rate at which a log that the modem uploads is stored in the phone's files. For comparison: cp
// and fsync of the same bytes on the same disk (that of $TMPDIR), and a loop that writes as many
// packages as the daemon, each to a file and appended to the log, both synchronised. Prints JSON.
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

#include "bench/rig.h"
#include "tests/e2e/support/value_or_throw.h"
#include "tools/qorextctl/phone/phone_files.h"

namespace {

namespace fs = std::filesystem;
using e2e::value_or_throw;
using nlohmann::json;

constexpr size_t kMebibyte = 1 << 20;
constexpr size_t kDefaultSize = 64;
constexpr int kDefaultRounds = 3;
constexpr size_t kPackageSize = 255 * 502;  // the largest that the modem uploads

std::string content_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void write_log(const fs::path& path, size_t size) {
  std::minstd_rand random(1);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  std::ofstream(path, std::ios::binary) << bytes;
}

void sync_file(const fs::path& path) {
  qorextctl::UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (fsync(file.get()) != 0) throw fs::filesystem_error("fsync", path, std::error_code());
}

double copy_seconds(const fs::path& from, const fs::path& to) {
  double start = bench::now();
  auto copy = value_or_throw(qorextctl::Process::start({.arguments = {"/bin/cp", from, to}}));
  auto status = copy.wait(bench::long_deadline());
  if (!status || status->code != 0) throw std::runtime_error("cp failed");
  sync_file(to);
  double taken = bench::now() - start;
  fs::remove(to);
  return taken;
}

double package_seconds(const std::string& bytes, const fs::path& root) {
  fs::path log = root / "packages.log";
  fs::path temporary = root / "package";
  double start = bench::now();
  for (size_t i = 0; i < bytes.size(); i += kPackageSize) {
    std::string_view package = std::string_view(bytes).substr(i, kPackageSize);
    std::ofstream(temporary, std::ios::binary) << package;
    std::ofstream(log, std::ios::binary | std::ios::app) << package;
    sync_file(log);
    sync_file(temporary);
  }
  double taken = bench::now() - start;
  fs::remove(temporary);
  fs::remove(log);
  return taken;
}

// The content of an index link's target. The link holds the path on a phone.
std::string linked_content(const fs::path& folder, const char* link) {
  std::error_code missing;
  fs::path target = fs::read_symlink(folder / link, missing);
  return missing ? "" : content_of(folder / target.filename());
}

// Throws unless the two kept logs, consecutive, are the end of the uploaded log.
void check_logs(const fs::path& folder, const std::string& uploaded) {
  std::string kept = linked_content(folder, ".0002") + linked_content(folder, ".0001");
  if (kept.empty() || !uploaded.ends_with(kept))
    throw std::runtime_error("the kept logs differ from the uploaded one");
}

// Removes index links and logs before the next round.
void clear(const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) fs::remove(entry.path());
}

struct Upload {
  double seconds;
  double processor_seconds;
};

// The daemon handles indications in order, and sends an unsolicited message for the last one.
Upload upload(const bench::Rig& rig, bench::Daemon& daemon, const fs::path& log) {
  double processor = bench::processor_seconds(daemon);
  double start = bench::now();
  rig.command_modem({{"command", "kpi"}, {"file", log.string()}});
  rig.command_modem({{"command", "indicate"}, {"indication", "generic"}});
  if (!daemon.receive_unsolicited(bench::long_deadline())) {
    throw std::runtime_error("the daemon does not finish the upload");
  }
  return {bench::now() - start, bench::processor_seconds(daemon) - processor};
}

json measure(size_t mebibytes, int rounds) {
  bench::Rig rig(bench::kModemProgram, bench::Spread::free);
  auto daemon = rig.start(bench::kDaemonProgram);
  fs::path root = rig.phone_root();
  fs::path log = root / "uploaded.log";
  fs::path folder = root.string() + qorextctl::kLogFolder;
  write_log(log, mebibytes * kMebibyte);
  std::string uploaded = content_of(log);

  auto size = static_cast<double>(mebibytes);
  bench::Figures figures;
  bench::Figures seconds;
  for (int round = 0; round < rounds; ++round) {
    double copy = copy_seconds(log, root / "copy.log");
    double packages = package_seconds(uploaded, root);
    Upload taken = upload(rig, *daemon, log);
    check_logs(folder, uploaded);
    clear(folder);
    seconds["upload_seconds"].push_back(taken.seconds);
    seconds["copy_seconds"].push_back(copy);
    figures["upload_mib_per_s"].push_back(size / taken.seconds);
    figures["copy_mib_per_s"].push_back(size / copy);
    figures["packages_mib_per_s"].push_back(size / packages);
    figures["upload_to_copy_time"].push_back(taken.seconds / copy);
    figures["upload_to_packages_time"].push_back(taken.seconds / packages);
    figures["daemon_processor_ms_per_mib"].push_back(1000 * taken.processor_seconds / size);
  }
  json result = {{"mib", mebibytes}, {"rounds", rounds}};
  result.update(bench::medians(figures));
  result.update(seconds);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  size_t mebibytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : kDefaultSize;
  int rounds = argc > 2 ? std::atoi(argv[2]) : kDefaultRounds;
  std::cout << measure(mebibytes, rounds).dump(2) << std::endl;
}
