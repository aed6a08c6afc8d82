// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/name_service.h"

#include <poll.h>

#include <mutex>
#include <set>

#include "platform/linux/qmi_transport/wait.h"

namespace qmi_cci {
namespace {

using qmi_transport::Announcement;
using qmi_transport::Endpoint;
using qmi_transport::ServerAddress;
using qmi_transport::Status;
using std::chrono::milliseconds;

constexpr milliseconds kAnswerTimeout{1000};
// Still enough for a name service on this machine that answers again.
constexpr milliseconds kTimeoutOfUnresponsive{50};
constexpr uint32_t kRecordMagic = 0x51534931;

// The name services whose last answer timed out. Shared by all callers and notifier threads; the
// mutex protects the set and is never held while another lock is taken. Never destroyed, because
// notifier threads may outlive main.
class Unresponsive {
 public:
  static Unresponsive& instance() {
    static Unresponsive& services = *new Unresponsive;
    return services;
  }

  milliseconds timeout_of(const Endpoint& endpoint) {
    std::lock_guard lock(mutex_);
    return names_.count(name_of(endpoint)) != 0 ? kTimeoutOfUnresponsive : kAnswerTimeout;
  }
  void record(const Endpoint& endpoint, bool has_answered) {
    std::lock_guard lock(mutex_);
    if (has_answered) {
      names_.erase(name_of(endpoint));
    } else {
      names_.insert(name_of(endpoint));
    }
  }

 private:
  // The path identifies the endpoint: it is empty for QRTR only.
  static const std::string& name_of(const Endpoint& endpoint) { return endpoint.path; }

  std::mutex mutex_;
  std::set<std::string> names_;
};

// An instance that comes up while the list is sent may be announced twice.
void update(const Announcement& announcement, std::vector<ServerAddress>& servers) {
  std::erase(servers, announcement.server);
  if (announcement.kind == Announcement::Kind::appeared) servers.push_back(announcement.server);
}

}  // namespace

// A name service that goes away is not recorded as unresponsive: it did not cost the caller time.
ServerList read_list(const Endpoint& endpoint, qmi_transport::ServiceWatch& watch) {
  auto deadline = qmi_transport::in(Unresponsive::instance().timeout_of(endpoint));
  ServerList list;
  Announcement announcement{};
  while (qmi_transport::wait_for(watch.fd(), POLLIN, deadline)) {
    Status status = watch.next(announcement);
    if (status == Status::nothing) continue;  // another service or version
    if (status != Status::ok) return list;
    list.is_complete = announcement.kind == Announcement::Kind::end_of_list;
    if (list.is_complete) break;
    update(announcement, list.servers);
  }
  Unresponsive::instance().record(endpoint, list.is_complete);
  return list;
}

void record_answer(const Endpoint& endpoint) { Unresponsive::instance().record(endpoint, true); }

// Every list takes a new watch: the name service sends its list at the beginning of a watch only.
std::vector<ServerAddress> list_servers(const Endpoint& endpoint, const qmi_idl::Service& service) {
  auto watch = qmi_transport::watch_service(endpoint, service.id, service.version);
  return watch != nullptr ? read_list(endpoint, *watch).servers : std::vector<ServerAddress>{};
}

qmi_service_info to_record(const ServerAddress& server) {
  return {{kRecordMagic, server.service, server.instance, server.node, server.port}};
}

std::optional<ServerAddress> from_record(const qmi_service_info& record) {
  const uint32_t* fields = record.opaque;
  if (fields[0] != kRecordMagic) return std::nullopt;
  return ServerAddress{fields[1], fields[2], fields[3], fields[4]};
}

}  // namespace qmi_cci
