// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/daemon/private_setup.h"

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tools/qorextctl/phone/phone_files.h"

namespace qorextctl {

namespace {

namespace fs = std::filesystem;

Error failed(const std::string& what, const std::string& path, const std::string& why) {
  return transport_error(fmt::format("cannot {} {}: {}", what, path, why));
}

}  // namespace

Result<std::unique_ptr<Setup>> Setup::create(const SetupOptions& options, int interrupt_fd) {
  std::unique_ptr<Setup> setup(new Setup(options, interrupt_fd));
  bool private_modem = options.modem.empty();
  bool private_root = options.phone_root.empty();
  std::optional<Error> error;
  if (private_modem || private_root) error = setup->make_folder();
  if (!error && private_root) error = setup->make_phone_root();
  if (private_modem) setup->modem_ = "unix:" + setup->modem_socket();
  if (!error && private_modem && !options.serves_modem) error = setup->start_modem(options);
  if (error) return *error;
  return setup;
}

Setup::~Setup() {
  process_.reset();
  std::error_code ignored;
  if (!folder_.empty()) fs::remove_all(folder_, ignored);
}

std::optional<Error> Setup::make_folder() {
  std::error_code error;
  fs::path base = fs::temp_directory_path(error);
  std::string folder = (error ? fs::path("/tmp") : base) / "qorextctl.XXXXXX";
  if (!mkdtemp(folder.data())) return failed("create the folder", folder, strerror(errno));
  folder_ = folder;
  give_to_radio_user(folder_);
  return std::nullopt;
}

std::optional<Error> Setup::make_phone_root() {
  phone_root_ = folder_ + "/phone";
  return prepare_phone(phone_root_, {});
}

std::optional<Error> Setup::start_modem(const SetupOptions& options) {
  std::string executable = options.modem_executable;
  if (executable.empty()) executable = sibling("qorext_modem");
  if (executable.empty()) {
    return transport_error(
        "qorext_modem is not in the folder of qorextctl; use --modem or --modem-program");
  }
  auto ready = make_pipe();
  auto output = make_pipe();
  if (!ready || !output) return failed("create pipes for", executable, strerror(errno));
  control_ = folder_ + "/control.sock";
  Launch launch;
  launch.arguments = {executable,
                      "--listen",
                      modem_,
                      "--control",
                      control_,
                      "--ready-fd",
                      std::to_string(ready->write.get())};
  if (!options.scenario.empty()) {
    launch.arguments.insert(launch.arguments.end(), {"--scenario", options.scenario});
  }
  launch.descriptors = {ready->write.get()};
  launch.output = output->write.get();
  auto process = Process::start(launch);
  if (!process) return process.error();
  process_.emplace(std::move(*process));
  ready->write.reset();
  output->write.reset();
  modem_log_.start(std::move(output->read));
  auto error = wait_ready(ready->read, options.timeout_seconds);
  if (!error) give_to_radio_user(modem_socket());
  return error;
}

// The modem writes a byte when it is ready. End of file: it has ended.
std::optional<Error> Setup::wait_ready(const UniqueFd& ready, double seconds) {
  Deadline deadline = Deadline::in_seconds(seconds);
  pollfd entries[] = {{ready.get(), POLLIN, 0}, {interrupt_fd_, POLLIN, 0}};
  while (poll(entries, std::size(entries), deadline.remaining_ms()) < 0 && errno == EINTR) {
  }
  char byte = 0;
  if (entries[0].revents == 0) return transport_error("the private modem is not ready in time");
  if (read(ready.get(), &byte, 1) == 1) return std::nullopt;
  auto status = process_->wait(deadline);
  modem_log_.wait_end(deadline);
  auto lines = modem_log_.lines();
  return transport_error(fmt::format("the private modem ended with {}: {}",
                                     status ? describe(*status) : "nothing",
                                     fmt::join(lines, " / ")));
}

Result<std::unique_ptr<Daemon>> launch_daemon(DaemonOptions options, const Setup& setup) {
  if (options.executable.empty()) options.executable = sibling("qorext_client");
  if (options.executable.empty()) {
    return transport_error("qorext_client is not in the folder of qorextctl; use --daemon-program");
  }
  options.modem = setup.modem();
  options.phone_root = setup.phone_root();
  return Daemon::start(options);
}

}  // namespace qorextctl
