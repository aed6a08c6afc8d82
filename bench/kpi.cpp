// SPDX-License-Identifier: Apache-2.0
// How fast a log that the modem uploads comes into the phone's files, beside cp and fsync of the
// same bytes on the same disk (that of $TMPDIR), and beside a loop that brings as many packages to
// the disk as the daemon does: each written to a file and appended to the log, both synchronised.
// Prints JSON.
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>

#include "bench/modem.h"
#include "bench/rig.h"
#include "bench/samples.h"
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
  auto status = copy.wait(bench::patience());
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

// What an index link leads to; it holds the path that the file has on a phone.
std::string linked_content(const fs::path& folder, const char* link) {
  std::error_code missing;
  fs::path target = fs::read_symlink(folder / link, missing);
  return missing ? "" : content_of(folder / target.filename());
}

// Throws unless the two kept logs, one behind the other, are the end of what was uploaded.
void check_logs(const fs::path& folder, const std::string& uploaded) {
  std::string kept = linked_content(folder, ".0002") + linked_content(folder, ".0001");
  if (kept.empty() || !uploaded.ends_with(kept)) throw std::runtime_error("the logs are not right");
}

// The daemon keeps the index links' names and the log it has: all of them go.
void clear(const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) fs::remove(entry.path());
}

struct Upload {
  double seconds;
  double processor_seconds;
};

// Indications are handled in order, and the last one here becomes a message.
Upload upload(bench::Modem& modem, qorextctl::Daemon& daemon, const fs::path& log) {
  double processor = bench::processor_seconds(daemon);
  double start = bench::now();
  modem.command({{"command", "kpi"}, {"file", log.string()}});
  modem.command({{"command", "indicate"}, {"indication", "generic"}});
  if (!daemon.receive_unsolicited(bench::patience())) {
    throw std::runtime_error("the daemon does not come to the end of the upload");
  }
  return {bench::now() - start, bench::processor_seconds(daemon) - processor};
}

json measure(size_t mebibytes, int rounds) {
  bench::Rig rig(bench::kModemProgram, bench::Spread::free);
  auto daemon = rig.start(bench::kDaemonProgram);
  bench::Modem modem(rig.control());
  fs::path root = rig.phone_root();
  fs::path log = root / "uploaded.log";
  fs::path folder = root.string() + qorextctl::kLogFolder;
  write_log(log, mebibytes * kMebibyte);
  std::string uploaded = content_of(log);

  bench::Samples copies;
  bench::Samples uploads;
  bench::Samples packages;
  bench::Samples to_copy;
  bench::Samples to_packages;
  bench::Samples processor;
  for (int round = 0; round < rounds; ++round) {
    copies.push_back(copy_seconds(log, root / "copy.log"));
    packages.push_back(package_seconds(uploaded, root));
    Upload taken = upload(modem, *daemon, log);
    check_logs(folder, uploaded);
    clear(folder);
    uploads.push_back(taken.seconds);
    to_copy.push_back(taken.seconds / copies.back());
    to_packages.push_back(taken.seconds / packages.back());
    processor.push_back(taken.processor_seconds);
  }
  auto size = static_cast<double>(mebibytes);
  return {{"mib", mebibytes},
          {"rounds", rounds},
          {"upload_mib_per_s", size / bench::median(uploads)},
          {"copy_mib_per_s", size / bench::median(copies)},
          {"packages_mib_per_s", size / bench::median(packages)},
          {"upload_to_copy_time", bench::median(to_copy)},
          {"upload_to_packages_time", bench::median(to_packages)},
          {"daemon_processor_ms_per_mib", 1000 * bench::median(processor) / size},
          {"upload_seconds", uploads},
          {"copy_seconds", copies}};
}

}  // namespace

int main(int argc, char** argv) {
  size_t mebibytes = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : kDefaultSize;
  int rounds = argc > 2 ? std::atoi(argv[2]) : kDefaultRounds;
  std::cout << measure(mebibytes, rounds).dump(2) << std::endl;
}
