// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/notifier.h"

#include <time.h>

#include "platform/linux/qmi_cci/name_service.h"
#include "platform/linux/qmi_cci/thread.h"
#include "platform/linux/qmi_transport/wait.h"

namespace qmi_cci {
namespace {

using qmi_transport::Announcement;
using qmi_transport::Deadline;
using qmi_transport::Status;

// How long a modem that is not there is left alone before it is looked for again.
constexpr std::chrono::milliseconds kRetryPause{100};

void initialise(qmi_client_os_params& signal) {
  signal.sig_set = 0;
  signal.timed_out = 0;
  signal.clock = 1;
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

void Notifier::start() {
  begin_watch();
  if (watch_ != nullptr) read_list(endpoint_, *watch_);
  watcher_ = quiet_thread([this] { watch_for_ever(); });
}

void Notifier::close() {
  stop_.set();
  if (watcher_.joinable()) watcher_.join();
}

void Notifier::begin_watch() {
  watch_ = qmi_transport::watch_service(endpoint_, service_.id, service_.version);
}

// A name service that is new, or has come back, has only instances that have come up meanwhile.
void Notifier::watch_for_ever() {
  for (;;) {
    if (watch_ != nullptr) follow(*watch_);
    watch_.reset();
    if (stop_.wait(-1, qmi_transport::in(kRetryPause)) == Ready::stopped) return;
    begin_watch();
  }
}

void Notifier::follow(qmi_transport::ServiceWatch& watch) {
  Announcement announcement{};
  while (stop_.wait(watch.fd(), Deadline::max()) == Ready::readable) {
    Status status = watch.next(announcement);
    if (status == Status::gone || status == Status::failed) return;
    if (status != Status::ok) continue;
    if (announcement.kind == Announcement::Kind::appeared) raise();
    if (announcement.kind == Announcement::Kind::end_of_list) note_answer(endpoint_);
  }
}

void Notifier::raise() {
  pthread_mutex_lock(&signal_.mutex);
  signal_.sig_set = 1;
  pthread_cond_signal(&signal_.cond);
  pthread_mutex_unlock(&signal_.mutex);
}

}  // namespace qmi_cci
