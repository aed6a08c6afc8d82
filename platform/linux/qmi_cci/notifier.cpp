// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/notifier.h"

#include <time.h>

#include "platform/linux/qmi_cci/name_service.h"
#include "platform/linux/qmi_transport/wait.h"

namespace qmi_cci {
namespace {

using qmi_transport::Announcement;
using qmi_transport::Deadline;
using qmi_transport::Status;

// The pause between attempts to reach a name service that is not there.
constexpr std::chrono::milliseconds kRetryPause{100};

void initialise(qmi_client_os_params& signal) {
  signal.sig_set = 0;
  signal.timed_out = 0;
  signal.clock = 1;  // CLOCK_MONOTONIC, as set for `cond` below
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&signal.cond, &attributes);
  pthread_condattr_destroy(&attributes);
  pthread_mutex_init(&signal.mutex, nullptr);
}

}  // namespace

Notifier::Notifier(qmi_transport::Endpoint endpoint, const qmi_idl::Service& service,
                   qmi_client_os_params& signal)
    : endpoint_(std::move(endpoint)), service_(service), signal_(signal) {
  initialise(signal_);
}

// Reads the list of present instances before the thread starts, so that the thread sees new ones
// only. A missing name service is not an error: the thread tries again until it is there.
void Notifier::start() {
  begin_watch();
  if (watch_ != nullptr) read_list(endpoint_, *watch_);
  watcher_ = start_thread([this] { run(); });
}

// Waits for the thread, because the caller may destroy the signal afterwards.
void Notifier::close() {
  stop_.set();
  if (watcher_.joinable()) watcher_.join();
}

void Notifier::begin_watch() {
  watch_ = qmi_transport::watch_service(endpoint_, service_.id, service_.version);
}

// A lookup after the first one does not skip the list: all instances of a name service that has
// come back have come up since the last one was lost.
void Notifier::run() {
  for (;;) {
    if (watch_ != nullptr) follow(*watch_);
    watch_.reset();
    if (stop_.wait(-1, qmi_transport::in(kRetryPause)) == Ready::stopped) return;
    begin_watch();
  }
}

// Continues after `nothing`: the watch has read an announcement of another service or version.
void Notifier::follow(qmi_transport::ServiceWatch& watch) {
  Announcement announcement{};
  while (stop_.wait(watch.fd(), Deadline::max()) == Ready::readable) {
    Status status = watch.next(announcement);
    if (status == Status::gone || status == Status::failed) return;
    if (status != Status::ok) continue;
    if (announcement.kind == Announcement::Kind::appeared) raise();
    if (announcement.kind == Announcement::Kind::end_of_list) record_answer(endpoint_);
  }
}

// The flag is set under the mutex, or a caller that has just read it as 0 would miss the wakeup.
void Notifier::raise() {
  pthread_mutex_lock(&signal_.mutex);
  signal_.sig_set = 1;
  pthread_cond_signal(&signal_.cond);
  pthread_mutex_unlock(&signal_.mutex);
}

}  // namespace qmi_cci
