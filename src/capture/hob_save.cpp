// SPDX-License-Identifier: Apache-2.0
#include "src/capture/capture.h"

#include <fcntl.h>
#include <pthread.h>
#include <stdint.h>
#include <sys/mman.h>

#include <atomic>

#include "phone_path.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/host/base/scoped_fd.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr char kHobRam[] = "/dev/qor_hob_ram";
constexpr char kHobPartition[] = "/dev/block/bootdevice/by-name/dhob";

// A physical address of the modem's RAM, which the device maps at the same offset.
constexpr off_t kHobBase = 0xF540000;
constexpr size_t kHobSize = 0x8000;

constexpr unsigned int kHobMessage = 0x13;
constexpr uint8_t kHobReady = 0xFF;  // save requests can be received
constexpr uint8_t kHobSaved = 1;
constexpr uint8_t kHobFailed = 0;

struct HobMessage {
  uint8_t value;
};
static_assert(sizeof(HobMessage) == 1);

// A plain flag, not a lock: it refuses the modem's repeated requests, but two threads that check it
// at the same time may both save. Relaxed order is enough, since it guards no other memory.
std::atomic<bool> g_in_progress = false;

pthread_attr_t g_thread_attributes;  // used on the callback thread only

class ScopedMapping {
 public:
  explicit ScopedMapping(int fd)
      : address_(mmap(nullptr, kHobSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, kHobBase)) {}
  ~ScopedMapping() {
    if (*this) munmap(address_, kHobSize);
  }

  ScopedMapping(const ScopedMapping&) = delete;
  ScopedMapping& operator=(const ScopedMapping&) = delete;

  explicit operator bool() const { return address_ != MAP_FAILED; }
  const void* address() const { return address_; }

 private:
  void* address_;
};

int send_hob_message(uint8_t value) {
  HobMessage request = {value};
  HobMessage response = {};
  return qorext_exchange(kHobMessage, request, response);
}

uint8_t write_partition(const ScopedMapping& block) {
  ScopedFd partition(open(phone_path(kHobPartition), O_RDWR | O_SYNC | O_CLOEXEC));
  if (!partition) {
    LOGE("dhob_write: Open hob block failed");
    return kHobFailed;
  }
  // One write: a short one is a failure and is not continued.
  if (write(partition.get(), block.address(), kHobSize) != ssize_t{kHobSize}) {
    LOGE("dhob_write: Write to hob block failed");
    return kHobFailed;
  }
  LOGE("dhob_write: Save RF to HOB successful");
  return kHobSaved;
}

uint8_t save_block() {
  ScopedFd ram(open(phone_path(kHobRam), O_RDWR | O_CLOEXEC));
  if (!ram) {
    LOGE("dhob_write: Unable to open %s", kHobRam);
    return kHobFailed;
  }
  LOGE("dhob_write: qor_shared_ram open success");
  ScopedMapping block(ram.get());
  if (!block) {
    LOGE("dhob_write: mmap failed");
    LOGE("dhob_write: base %#x", static_cast<unsigned>(kHobBase));
    LOGE("dhob_write: size %#x", static_cast<unsigned>(kHobSize));
    return kHobFailed;
  }
  return write_partition(block);
}

}  // namespace

int send_hob_ready() {
  LOGE("dhob_write: Sending ready to received indications message to BP");
  return send_hob_message(kHobReady);
}

void* dhob_write(void*) {
  if (g_in_progress.load(std::memory_order_relaxed)) {
    LOGE("dhob_write: Duplicate request: Save to HOB already in progress");
    send_hob_message(kHobFailed);
    return nullptr;
  }
  g_in_progress.store(true, std::memory_order_relaxed);
  uint8_t outcome = save_block();
  sync();  // the report says that the block is on the disk
  LOGE("dhob_write: Sending DYNHOB request to BP");
  send_hob_message(outcome);
  g_in_progress.store(false, std::memory_order_relaxed);
  return nullptr;
}

int hobSaveIndHndlr(qmi_client_type, unsigned int, void*, unsigned int, void*) {
  if (qor_ext_instance_id != kPrimaryInstance) return 0;
  pthread_attr_init(&g_thread_attributes);
  pthread_attr_setdetachstate(&g_thread_attributes, PTHREAD_CREATE_DETACHED);
  pthread_t thread;  // not kept: the thread is detached
  pthread_create(&thread, &g_thread_attributes, dhob_write, nullptr);
  return 0;
}
