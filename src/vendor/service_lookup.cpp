// SPDX-License-Identifier: Apache-2.0
#include "src/vendor/service_lookup.h"

#include <errno.h>
#include <pthread.h>
#include <sys/time.h>
#include <time.h>

#include <algorithm>

namespace {

constexpr uint32_t kMonotonicClock = 1;
constexpr time_t kWaitSeconds = 1;
constexpr long kNanosecondsPerSecond = 1000000000;

// The deadline must be in the clock that the client library chose for the condition variable.
timespec deadline_from_now(uint32_t clock) {
  timespec deadline = {};
  if (clock == kMonotonicClock) {
    clock_gettime(CLOCK_MONOTONIC, &deadline);
  } else {
    timeval now = {};
    gettimeofday(&now, nullptr);
    deadline = {now.tv_sec, now.tv_usec * 1000};
  }
  deadline.tv_sec += kWaitSeconds;
  if (deadline.tv_nsec >= kNanosecondsPerSecond) {
    deadline.tv_nsec -= kNanosecondsPerSecond;
    ++deadline.tv_sec;
  }
  return deadline;
}

}  // namespace

void wait_for_service_signal(qmi_client_os_params* signal) {
  signal->timed_out = 0;
  timespec deadline = deadline_from_now(signal->clock);

  // One deadline for all rounds: wake-ups without the signal do not extend the wait.
  pthread_mutex_lock(&signal->mutex);
  while (signal->sig_set == 0) {
    if (pthread_cond_timedwait(&signal->cond, &signal->mutex, &deadline) == ETIMEDOUT) {
      signal->timed_out = 1;
      break;
    }
  }
  pthread_mutex_unlock(&signal->mutex);
}

int list_service_instances(qmi_idl_service_object_type service, unsigned int seen,
                           ServiceInstances* instances) {
  *instances = {};
  instances->entries = std::min(seen, kMaxServiceInstances);
  instances->services = seen;
  return qmi_client_get_service_list(service, instances->list, &instances->entries,
                                     &instances->services);
}
