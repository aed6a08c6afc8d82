// SPDX-License-Identifier: Apache-2.0
// qorext_client readfd writefd writeunsolfd instance: serves the radio interface daemon's OEM-hook
// requests through the modem. The exit status is 0, also after a failure.
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include "src/capture/capture.h"
#include "src/carrier_modem/carrier_clients.h"
#include "src/carrier_modem/operations.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/host/host.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr uid_t kRadioUser = 1001;
constexpr int kCountedArguments = 4;
constexpr int kInvalidFd = -1;

// Returns the read descriptor, or kInvalidFd when the arguments are not valid.
int parse_arguments(int argc, char** argv) {
  // The count includes the program's own name, so the fourth argument may be missing; it is then 0.
  if (argc < kCountedArguments) {
    LOGE("Need %d args %d", kCountedArguments, argc);
    return kInvalidFd;
  }
  int read_fd = atoi(argv[1]);
  int write_fd = atoi(argv[2]);
  int unsolicited_fd = atoi(argv[3]);
  qor_ext_instance_id = argc > kCountedArguments ? static_cast<uint32_t>(atoi(argv[4])) : 0;
  set_parent_pipes(write_fd, unsolicited_fd);
  LOGE("readfd=%d, writefd=%d, writeunsolfd=%d qor_ext_instance_id=%d", read_fd, write_fd,
       unsolicited_fd, qor_ext_instance_id);

  if (read_fd == kInvalidFd || write_fd == kInvalidFd || unsolicited_fd == kInvalidFd) {
    LOGE("Invalid fds");
    return kInvalidFd;
  }
  return read_fd;
}

// Stops at the first client that cannot be opened.
bool open_modem_clients() {
  if (int rc = qmi_qorext_sprint_client_init(); rc != 0) {
    LOGE("main:qmi_qorext_sprint_client_init failed = %d", rc);
    return false;
  }
  if (int rc = qmi_qorext_hook_client_init(handleUnsolMsg); rc != 0) {
    LOGE("main:qmi_qorext_hook_client_t failed = %d", rc);
    return false;
  }
  return true;
}

// In this order; a failure is logged and does not end the start-up.
void exchange_start_up_notices() {
  bool is_primary = qor_ext_instance_id == kPrimaryInstance;
  if (notify_auto_verify_sim_pin() != 0) {
    LOGE("[Warning] Failed notify the auto verify SIM PIN to BP");
  }
  if (is_primary) {
    qor_qmi_read_baseband_config_version();
    update_imei_sv();
  }
  publish_lte_bc_config();
  if (is_primary) send_hob_ready();
}

}  // namespace

int main(int argc, char** argv) {
  LOGE("Starting qorext_client");
  signal(SIGPIPE, SIG_IGN);  // writing to a closed pipe is a logged error
  // The result is ignored: a process that may not change its user continues as it is.
  [[maybe_unused]] int ignored = setuid(kRadioUser);

  int read_fd = parse_arguments(argc, argv);
  if (read_fd == kInvalidFd || !open_modem_clients()) return 0;

  exchange_start_up_notices();
  serve_requests(read_fd);
  return 0;
}
