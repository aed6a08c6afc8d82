// SPDX-License-Identifier: Apache-2.0
#include "modem/server_loop.h"

#include <errno.h>
#include <fmt/format.h>
#include <signal.h>
#include <stdio.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <system_error>

#include "modem/messages/services.h"

namespace modem {
namespace {

using qmi_transport::ScopedFd;

constexpr int kWaitForever = -1;
// Of an upload, before other events are served.
constexpr int kPacketsATurn = 16;
constexpr const char* kLostClient = "a client was lost";

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

ScopedFd block_signals() {
  signal(SIGPIPE, SIG_IGN);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  if (sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) fail("sigprocmask");
  return ScopedFd(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

}  // namespace

ServerLoop::ServerLoop(Simulator& simulator, std::unique_ptr<qmi_transport::Server> server,
                       const std::string& control_path, bool is_verbose)
    : simulator_(simulator),
      server_(std::move(server)),
      control_(simulator),
      is_verbose_(is_verbose),
      buffer_(qmi_transport::kMaxPacketSize),
      epoll_(epoll_create1(EPOLL_CLOEXEC)),
      signals_(block_signals()) {
  watch(signals_.get());
  watch(server_->fd());
  if (!control_path.empty()) {
    control_server_.emplace(control_path, [this](const std::string& line) { return answer(line); });
    watch(control_server_->fd());
  }
  for (const qmi_idl::Service* service : services()) {
    perform({Action::Kind::publish, service->id, 0, {}});
  }
}

void ServerLoop::watch(int fd) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = fd;
  if (epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event) != 0) fail("epoll_ctl");
}

void ServerLoop::run() {
  while (!is_ending_ && !control_.quit_wanted()) {
    epoll_event event{};
    int count = epoll_wait(epoll_.get(), &event, 1, timeout_ms());
    if (count < 0 && errno != EINTR) fail("epoll_wait");
    if (count == 1) handle(event.data.fd);
    perform_due();
    continue_upload();
  }
}

void ServerLoop::handle(int fd) {
  if (fd == server_->fd()) return receive();
  if (fd == signals_.get()) {
    is_ending_ = true;
    return;
  }
  control_server_->serve();
}

void ServerLoop::receive() {
  using Kind = qmi_transport::ServerEvent::Kind;
  qmi_transport::ServerEvent event = server_->next(buffer_);
  if (event.kind == Kind::peer_dropped) note_drop(event);
  if (event.kind == Kind::no_descriptors) {
    fmt::print(stderr, "qorext_modem: new clients have to wait: no descriptors are left\n");
  }
  if (event.kind != Kind::packet) return;
  const qmi_idl::Service* service = find_service(event.service);
  if (service == nullptr) return;

  auto packet = std::span<const uint8_t>(buffer_).first(event.size);
  show(event.service, event.peer, packet);
  simulator_.receive(*service, event.peer, packet);
}

// The packets of an upload that the client has not read are lost.
void ServerLoop::note_drop(const qmi_transport::ServerEvent& event) {
  fmt::print(stderr, "qorext_modem: client {} of {} is closed: it has not read {} bytes\n",
             event.peer, find_service(event.service)->name, event.size);
  KpiUpload* upload = simulator_.uploads.current();
  bool is_hit = event.service == qorext_service().id && upload != nullptr && upload->has_begun();
  if (is_hit) upload->fail(kLostClient);
}

void ServerLoop::perform_due() {
  while (auto action = simulator_.device.outbox.take_due(Clock::now())) perform(*action);
}

void ServerLoop::perform(const Action& action) {
  switch (action.kind) {
    case Action::Kind::send:
      send(action.service, action.peer, action.packet);
      return;
    case Action::Kind::broadcast:
      broadcast(action.service, action.packet);
      return;
    case Action::Kind::withdraw:
      report_service(action.service, false);
      up_.erase(action.service);
      return server_->withdraw(action.service);
    case Action::Kind::publish:
      report_service(action.service, true);
      up_.insert(action.service);
      return publish_instances(*find_service(action.service));
    case Action::Kind::resize:
      if (up_.count(action.service) != 0) publish_instances(*find_service(action.service));
      return;
  }
}

// Does not touch instances that are published already.
void ServerLoop::publish_instances(const qmi_idl::Service& service) {
  uint32_t wanted = &service == &qorext_service() ? simulator_.instances : 1;
  for (uint32_t number = 1; number <= wanted; ++number) {
    server_->publish(service.id, instance_of(service, number));
  }
  for (uint32_t number = wanted + 1; number <= kMaxInstances; ++number) {
    server_->withdraw_instance(service.id, instance_of(service, number));
  }
}

// Returns false if a client was lost.
bool ServerLoop::broadcast(uint32_t service, const Bytes& packet) {
  bool has_reached_all = true;
  for (uint64_t peer : server_->peers(service)) {
    has_reached_all = send(service, peer, packet) && has_reached_all;
  }
  return has_reached_all;
}

bool ServerLoop::send(uint32_t service, uint64_t peer, const Bytes& packet) {
  show(service, peer, packet);
  return server_->send(peer, packet) == qmi_transport::Status::ok;
}

bool ServerLoop::can_upload() const {
  return simulator_.uploads.current() != nullptr && !server_->peers(qorext_service().id).empty();
}

// An upload waits for its first client, then sends as fast as the clients read. The loss of any
// client ends it.
void ServerLoop::continue_upload() {
  KpiUpload* upload = simulator_.uploads.current();
  if (upload == nullptr) return;
  uint32_t service = qorext_service().id;
  if (!can_upload()) {
    if (upload->has_begun()) upload->fail("the client has gone");
    return;
  }
  for (int i = 0; i < kPacketsATurn && server_->has_room(service); ++i) {
    auto packet = upload->next();
    if (!packet) return;
    if (!broadcast(service, *packet)) return upload->fail(kLostClient);
  }
}

// Called before a packet is sent and after one is received, so that a report never precedes its
// cause.
void ServerLoop::show(uint32_t service, uint64_t peer, std::span<const uint8_t> packet) {
  const qmi_idl::Service& known = *find_service(service);
  if (is_verbose_) fmt::print(stderr, "{}\n", packet_text(known, packet));
  if (control_server_ && control_server_->is_watched()) {
    control_server_->report(watched_message(known, peer, packet));
  }
}

void ServerLoop::report_service(uint32_t service, bool is_up) {
  if (control_server_) control_server_->report(watched_service(*find_service(service), is_up));
}

int ServerLoop::timeout_ms() const {
  if (can_upload() && server_->has_room(qorext_service().id)) return 0;
  auto due = simulator_.device.outbox.next_due();
  if (!due) return kWaitForever;
  auto left = std::chrono::ceil<milliseconds>(*due - Clock::now()).count();
  return static_cast<int>(std::clamp<int64_t>(left, 0, INT32_MAX));
}

// The actions of a command come before its answer.
ControlServer::Answered ServerLoop::answer(const std::string& line) {
  std::string text = control_.answer(line);
  perform_due();
  return {text, control_.watch_wanted()};
}

}  // namespace modem
