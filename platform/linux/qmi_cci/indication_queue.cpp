// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/indication_queue.h"

#include <malloc.h>

#include <algorithm>
#include <utility>

#include "platform/linux/qmi_cci/log.h"
#include "platform/linux/qmi_idl/codec.h"

namespace qmi_cci {
namespace {

// The allocator keeps what is freed. Up to here it may: that much it keeps of any program.
constexpr size_t kKeptMemory = size_t{128} << 10;

constexpr char kFull[] = "the queue is full";
constexpr char kNoMemory[] = "there is no memory";

}  // namespace

void IndicationQueue::push(std::span<const uint8_t> packet) {
  Burst ended;
  {
    std::lock_guard lock(mutex_);
    bool is_over = has_room_again();
    if (const char* cause = refuse(packet)) return drop(cause);
    if (is_over) ended = std::exchange(burst_, {});
    changed_.notify_one();
  }
  report(ended);
}

const char* IndicationQueue::refuse(std::span<const uint8_t> packet) {
  if (burst_.cause == kFull && !has_room_again()) return kFull;
  auto queued = QueuedPacket::copy(packet);
  if (queued == nullptr) return kNoMemory;
  if (queued->cost() > bound_ - packets_.cost()) return kFull;
  packets_.append(std::move(queued));
  highest_cost_ = std::max(highest_cost_, packets_.cost());
  return nullptr;
}

void IndicationQueue::drop(const char* cause) {
  if (burst_.dropped == 0) burst_ = {0, cause, packets_.cost()};
  ++burst_.dropped;
}

QueuedPacket::Ptr IndicationQueue::pop() {
  Burst ended;
  QueuedPacket::Ptr packet;
  {
    Lock lock(mutex_);
    wait_for_packet(lock);
    if (stopped_) return nullptr;
    packet = packets_.take_first();
    if (has_room_again()) ended = std::exchange(burst_, {});
  }
  report(ended);
  return packet;
}

void IndicationQueue::wait_for_packet(Lock& lock) {
  if (packets_.empty() && highest_cost_ > kKeptMemory) {
    highest_cost_ = 0;
    lock.unlock();
    malloc_trim(0);
    lock.lock();
  }
  changed_.wait(lock, [this] { return stopped_ || !packets_.empty(); });
}

void IndicationQueue::call_back(qmi_client_type client, qmi_client_ind_cb callback,
                                void* callback_data) {
  while (auto packet = pop()) {
    auto header = qmi_idl::load_header(packet->bytes());
    if (!header) continue;
    callback(client, header->message_id, packet->bytes().data() + qmi_idl::kHeaderSize,
             header->length, callback_data);
  }
}

void IndicationQueue::stop() {
  std::lock_guard lock(mutex_);
  stopped_ = true;
  changed_.notify_one();
}

void IndicationQueue::report_burst() {
  Burst ended;
  {
    std::lock_guard lock(mutex_);
    ended = std::exchange(burst_, {});
  }
  report(ended);
}

void IndicationQueue::report(const Burst& burst) const {
  if (burst.dropped == 0) return;
  LOGE("Dropped %zu indications: %s, %zu of at most %zu bytes queued", burst.dropped, burst.cause,
       burst.queued, bound_);
}

}  // namespace qmi_cci
