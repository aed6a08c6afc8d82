// SPDX-License-Identifier: Apache-2.0
// A boot follows a crash when the power-up reason is a kernel panic, when the modem has restarted
// since boot, or, if its restarts are not known, when a restart reason exists.
#include "src/capture/capture.h"

#include <ctype.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>

#include "phone_path.h"
#include "src/host/base/log.h"
#include "src/host/base/scoped_fd.h"
#include "src/vendor/utility_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr char kBootInfo[] = "/proc/bootinfo";
constexpr char kModemRestarts[] = "/sys/module/subsystem_restart/parameters/modem_restarts";
constexpr char kRestartReason[] = "/sys/module/pil_q6v5_mss/parameters/ssr_reason";

// Compared as text: other spellings of the number do not match.
constexpr char kKernelPanic[] = "0x00020000";

constexpr size_t kBootInfoSize = 1024;
constexpr size_t kLineSize = 32;

// Reads at most size - 1 bytes with one read() and terminates them. False on failure.
template <size_t size>
bool read_text(const ScopedFd& file, char (&text)[size]) {
  ssize_t length = read(file.get(), text, size - 1);
  if (length < 0) return false;
  text[length] = '\0';
  return true;
}

// Reads the file's first line; false when there is none or it is empty.
bool read_line(const ScopedFd& file, char (&line)[kLineSize]) {
  if (!read_text(file, line)) return false;
  if (char* end = strchr(line, '\n')) end[1] = '\0';
  return line[0] != '\0';
}

ScopedFd open_for_reading(const char* path) {
  return ScopedFd(open(phone_path(path), O_RDONLY | O_CLOEXEC));
}

void find_power_up_reason(const char* boot_info, char (&reason)[kLineSize]) {
  const char* key = strstr(boot_info, "POWERUPREASON");
  const char* separator = key == nullptr ? nullptr : strstr(key, ": ");
  if (separator == nullptr) return;
  const char* value = separator + 2;  // after the colon and the space
  for (size_t i = 0; i < kLineSize - 1; ++i) {
    auto character = static_cast<unsigned char>(value[i]);
    if (character == '\0' || isspace(character)) break;
    reason[i] = value[i];
  }
}

bool is_kernel_panic() {
  ScopedFd file = open_for_reading(kBootInfo);
  char boot_info[kBootInfoSize];
  if (!file || !read_text(file, boot_info)) return false;

  LOGD("is_kernel_panic looking for POWERUPREASON");
  char reason[kLineSize] = {};
  find_power_up_reason(boot_info, reason);
  LOGD("is_kernel_panic POWERUPREASON=%s", reason);
  return strcmp(reason, kKernelPanic) == 0;
}

// Keeps the decimal digits of the line, in order; false when there are none.
bool keep_digits(char (&line)[kLineSize]) {
  char* end = line;
  for (const char* from = line; *from != '\0'; ++from) {
    if (*from >= '0' && *from <= '9') *end++ = *from;
  }
  *end = '\0';
  return end != line;
}

// Stores how often the modem has restarted since boot; false when the kernel does not report it.
bool count_modem_restarts(int* restarts) {
  ScopedFd file = open_for_reading(kModemRestarts);
  LOGD("is_modem_panic looking for BP Panic");
  if (!file) {
    LOGE("*** failed open the sys file : restart_count ***\n");
    return false;
  }
  char line[kLineSize] = {};
  if (!read_line(file, line) || !keep_digits(line)) return false;
  *restarts = atoi(line);
  LOGE("modem_panic: %d", *restarts);
  return true;
}

// Any reason counts; its text is not compared.
bool has_restart_reason() {
  LOGD("*** Try open the sys file bp panic_reason : %s\n", kRestartReason);
  ScopedFd file = open_for_reading(kRestartReason);
  if (!file) {
    LOGE("*** failed open the sys file : panic_reason ***\n");
    return false;
  }
  char line[kLineSize] = {};
  return read_line(file, line);
}

bool is_modem_panic() {
  int restarts = 0;
  if (count_modem_restarts(&restarts)) return restarts >= 1;
  return has_restart_reason();
}

int send_notice() {
  utils_req_msg_v01 request = {kUtilityAutoVerifySimPin, 1, {}};
  utils_resp_msg_v01 response = {};
  return qorext_exchange(kUtilityMessage, request, response) == 0 ? 0 : -1;
}

}  // namespace

int notify_auto_verify_sim_pin() {
  if (is_kernel_panic() || is_modem_panic()) {
    LOGD("notify_auto_verify_sim_pin from AP called");
    return send_notice();
  }
  LOGD("notify_auto_verify_sim_pin from AP NOT called");
  return 0;
}
