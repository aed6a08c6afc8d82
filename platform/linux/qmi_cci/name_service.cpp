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

constexpr milliseconds kPatience{1000};
constexpr milliseconds kPatienceWithTheSilent{50};

// The name services that have not answered when they were asked last. Never destroyed, because
// threads of notifiers may outlive main.
class SilentServices {
 public:
  static SilentServices& instance() {
    static SilentServices& services = *new SilentServices;
    return services;
  }

  milliseconds patience(const Endpoint& endpoint) {
    std::lock_guard lock(mutex_);
    return names_.contains(name_of(endpoint)) ? kPatienceWithTheSilent : kPatience;
  }
  void note(const Endpoint& endpoint, bool is_silent) {
    std::lock_guard lock(mutex_);
    if (is_silent) {
      names_.insert(name_of(endpoint));
    } else {
      names_.erase(name_of(endpoint));
    }
  }

 private:
  // QRTR has no path, and no Unix socket is without one.
  static const std::string& name_of(const Endpoint& endpoint) { return endpoint.path; }

  std::mutex mutex_;
  std::set<std::string> names_;
};

void note(std::vector<ServerAddress>& servers, const Announcement& announcement) {
  std::erase(servers, announcement.server);
  if (announcement.kind == Announcement::Kind::appeared) servers.push_back(announcement.server);
}

}  // namespace

ServerList read_list(const Endpoint& endpoint, qmi_transport::ServiceWatch& watch) {
  auto deadline = qmi_transport::in(SilentServices::instance().patience(endpoint));
  ServerList list;
  Announcement announcement{};
  while (qmi_transport::wait_for(watch.fd(), POLLIN, deadline)) {
    Status status = watch.next(announcement);
    if (status == Status::nothing) continue;
    if (status != Status::ok) return list;
    list.is_whole = announcement.kind == Announcement::Kind::end_of_list;
    if (list.is_whole) break;
    note(list.servers, announcement);
  }
  SilentServices::instance().note(endpoint, !list.is_whole);
  return list;
}

void note_answer(const Endpoint& endpoint) { SilentServices::instance().note(endpoint, false); }

}  // namespace qmi_cci
