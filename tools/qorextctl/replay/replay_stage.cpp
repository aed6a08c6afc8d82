// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay_stage.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "modem/messages/services.h"
#include "tools/qorextctl/phone/phone_files.h"

namespace qorextctl {

namespace {

const qmi_idl::Service& service_of(const std::string& name) {
  return *modem::find_service(std::string_view(name));
}

}  // namespace

Result<std::unique_ptr<ReplayModem>> ReplayModem::serve(const std::string& path) {
  auto server = qmi_transport::serve({qmi_transport::Endpoint::Kind::unix_socket, path});
  if (!server) {
    return transport_error(fmt::format("cannot serve the modem at {}: {}", path, strerror(errno)));
  }
  std::unique_ptr<ReplayModem> modem(new ReplayModem(std::move(server)));
  for (const qmi_idl::Service* service : modem::services()) {
    modem->move_service(service->name, true);
  }
  return modem;
}

std::optional<ReplayModem::Request> ReplayModem::next() {
  qmi_transport::ServerEvent event = server_->next(buffer_);
  if (event.kind != qmi_transport::ServerEvent::Kind::packet) return std::nullopt;
  const qmi_idl::Service* service = modem::find_service(event.service);
  if (!service) return std::nullopt;
  auto message = reader_.read(service->name, event.peer, View(buffer_).first(event.size));
  if (!message || message->header.type != qmi_idl::WireType::request) return std::nullopt;
  return Request{std::move(*message), event.peer};
}

void ReplayModem::send_to_all(const std::string& service, View packet) {
  for (uint64_t client : server_->peers(service_of(service).id)) server_->send(client, packet);
}

void ReplayModem::move_service(const std::string& name, bool is_up) {
  const qmi_idl::Service& service = service_of(name);
  if (!is_up) return server_->withdraw(service.id);
  server_->publish(service.id, modem::instance_of(service));
}

Result<std::unique_ptr<ReplayStage>> ReplayStage::start(const LaunchOptions& options,
                                                        Printer& printer, OnRequest on_request) {
  std::unique_ptr<ReplayStage> stage(new ReplayStage(options.timeout, std::move(on_request)));
  if (auto error = stage->open(options, printer)) return *error;
  stage->note_activity();
  return stage;
}

std::optional<Error> ReplayStage::open(const LaunchOptions& options, Printer& printer) {
  SetupOptions setup_options = options.setup;
  setup_options.serves_modem = true;
  auto setup = Setup::create(setup_options, interrupts_.fd());
  if (!setup) return setup.error();
  setup_ = std::move(*setup);
  auto modem = ReplayModem::serve(setup_->modem_socket());
  if (!modem) return modem.error();
  modem_ = std::move(*modem);
  give_to_radio_user(setup_->modem_socket());
  DaemonOptions daemon_options;
  daemon_options.executable = options.daemon_executable;
  daemon_options.instance = options.instance;
  if (options.log)
    daemon_options.on_log = [&printer](const std::string& line) { printer.log_line(line); };
  auto daemon = launch_daemon(std::move(daemon_options), *setup_);
  if (!daemon) return daemon.error();
  daemon_ = std::move(*daemon);
  return std::nullopt;
}

bool ReplayStage::wait(const std::function<bool()>& done, int max_ms) {
  Deadline deadline = Deadline::in_seconds(seconds_);
  for (bool is_late = false;; is_late = deadline.passed()) {
    if (done()) return true;
    if (interrupted_ || has_ended() || is_late) return false;
    pollfd entries[] = {{modem_->fd(), POLLIN, 0},
                        {daemon_->replies().poll_fd(), POLLIN, 0},
                        {daemon_->unsolicited().poll_fd(), POLLIN, 0},
                        {interrupts_.fd(), POLLIN, 0}};
    // The idle time ends earlier than the deadline when the daemon has been idle before this wait.
    int left = std::min(deadline.remaining_ms(), idle_.remaining_ms());
    int ready = poll(entries, std::size(entries), std::min(left, max_ms));
    if (ready == 0 && left == 0) return false;
    if (ready <= 0) continue;
    note_activity();
    if (entries[0].revents != 0) {
      if (auto request = modem_->next()) on_request_(*request);
    }
    if (entries[1].revents != 0) daemon_->replies().read_available();
    if (entries[2].revents != 0) daemon_->unsolicited().read_available();
    interrupted_ = entries[3].revents != 0;
  }
}

std::string ReplayStage::end() {
  auto status = daemon_->wait_exit(Deadline::in_seconds(seconds_));
  return status ? describe(*status) : "none";
}

}  // namespace qorextctl
