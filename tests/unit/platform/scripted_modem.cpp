// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/platform/scripted_modem.h"

#include <linux/qrtr.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <future>

namespace test_support {
namespace {

using qmi_transport::ServerEvent;

bool kernel_has_qrtr() {
  int fd = socket(AF_QIPCRTR, SOCK_DGRAM, 0);
  if (fd >= 0) close(fd);
  return fd >= 0;
}

std::string text_of(const qmi_transport::Endpoint& endpoint) {
  return endpoint.kind == TransportKind::qrtr ? "qrtr" : "unix:" + endpoint.path;
}

size_t entry_count(const char* folder) {
  auto entries = std::filesystem::directory_iterator(folder);
  return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

ModemPlace::ModemPlace(TransportKind kind) : endpoint_{kind, {}} {
  bool is_qrtr = kind == TransportKind::qrtr;
  if (!is_qrtr) endpoint_.path = socket_path();
  if (is_qrtr && !kernel_has_qrtr()) emulation_.emplace("QRTR_EMULATION", folder_.path());
  modem_.emplace("QOREXT_MODEM", text_of(endpoint_));
}

Resources own_resources() { return {entry_count("/proc/self/fd"), entry_count("/proc/self/task")}; }

ScriptedModem::ScriptedModem(const qmi_transport::Endpoint& endpoint, Handler handler,
                             const qmi_transport::ServerLimits& limits)
    : server_(qmi_transport::serve(endpoint, limits)), handler_(std::move(handler)) {
  if (server_ == nullptr) abort();
  thread_ = std::thread([this] { serve(); });
}

ScriptedModem::~ScriptedModem() {
  run([this](Server&) { ending_ = true; });
  thread_.join();
}

void ScriptedModem::run(std::function<void(Server&)> work) {
  std::promise<void> done;
  {
    std::lock_guard lock(mutex_);
    work_.push_back([&](Server& server) {
      work(server);
      done.set_value();
    });
  }
  eventfd_write(wake_.get(), 1);
  done.get_future().wait();
}

void ScriptedModem::publish(uint32_t service, uint32_t instance) {
  run([=](Server& server) { EXPECT_TRUE(server.publish(service, instance)); });
}

void ScriptedModem::withdraw(uint32_t service) {
  run([=](Server& server) { server.withdraw(service); });
}

void ScriptedModem::answer_with(Handler handler) {
  run([this, &handler](Server&) { handler_ = std::move(handler); });
}

void ScriptedModem::hold(std::function<void()> meanwhile) {
  run([&meanwhile](Server&) { meanwhile(); });
}

std::vector<Request> ScriptedModem::requests() const {
  std::lock_guard lock(mutex_);
  return requests_;
}

size_t ScriptedModem::request_count() const {
  std::lock_guard lock(mutex_);
  return requests_.size();
}

size_t ScriptedModem::peers_gone() const {
  std::lock_guard lock(mutex_);
  return peers_gone_;
}

size_t ScriptedModem::peers_dropped() const {
  std::lock_guard lock(mutex_);
  return peers_dropped_;
}

void ScriptedModem::serve() {
  Bytes buffer(qmi_transport::kMaxPacketSize);
  while (!ending_) {
    pollfd sources[] = {{wake_.get(), POLLIN, 0}, {server_->fd(), POLLIN, 0}};
    poll(sources, 2, -1);
    if (sources[0].revents != 0) do_work();
    if (sources[1].revents != 0) handle_events(buffer);
  }
  server_.reset();
}

void ScriptedModem::handle_events(std::span<uint8_t> buffer) {
  ServerEvent event = server_->next(buffer);
  if (event.kind != ServerEvent::Kind::packet) {
    std::lock_guard lock(mutex_);
    if (event.kind == ServerEvent::Kind::peer_gone) ++peers_gone_;
    if (event.kind == ServerEvent::Kind::peer_dropped) ++peers_dropped_;
    return;
  }
  auto packet = buffer.first(event.size);
  Request request{event.peer, event.service, Bytes(packet.begin(), packet.end())};
  {
    std::lock_guard lock(mutex_);
    requests_.push_back(request);
  }
  if (handler_) handler_(*server_, request);
}

void ScriptedModem::do_work() {
  eventfd_t count = 0;
  eventfd_read(wake_.get(), &count);
  std::vector<std::function<void(Server&)>> work;
  {
    std::lock_guard lock(mutex_);
    work.swap(work_);
  }
  for (auto& each : work) each(*server_);
}

}  // namespace test_support
