// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/indication_queue.h"

#include <malloc.h>
#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/linux/qmi_cci/log.h"
#include "platform/linux/qmi_cci/memory.h"
#include "platform/linux/qmi_idl/codec.h"

namespace qmi_cci {
namespace {

constexpr char kVariable[] = "QOREXT_INDICATION_QUEUE";

// The allocator keeps freed memory. Beyond this size it is returned to the system.
constexpr size_t kRetainedMemory = size_t{128} << 10;

constexpr char kFull[] = "the queue is full";
constexpr char kNoMemory[] = "there is no memory";

// Returns 0 when the text is not a decimal number.
size_t parse_number(std::string_view text) {
  size_t number = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

}  // namespace

size_t queue_bound_from_environment() {
  const char* text = getenv(kVariable);
  if (text == nullptr) return kDefaultQueueBound;
  size_t bound = parse_number(text);
  if (bound >= kMinQueueBound) return bound;
  LOGE("%s: %s is not a number of bytes from %zu on; %zu is taken", kVariable, text, kMinQueueBound,
       kDefaultQueueBound);
  return kDefaultQueueBound;
}

void QueuedPacket::Free::operator()(QueuedPacket* packet) const { free(packet); }

// Uses malloc(), not new: an exception would end the reading thread, and with it the process.
QueuedPacket::Ptr QueuedPacket::copy(std::span<const uint8_t> bytes) {
  void* memory = malloc(sizeof(QueuedPacket) + bytes.size());
  if (memory == nullptr) return nullptr;
  Ptr packet(new (memory) QueuedPacket(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), packet->bytes().begin());
  return packet;
}

// The bound is one of memory, so it counts what the allocator really uses: the usable size and the
// size_t that it stores before each block.
size_t QueuedPacket::cost() const {
  return malloc_usable_size(const_cast<QueuedPacket*>(this)) + sizeof(size_t);
}

PacketList::~PacketList() {
  while (!empty()) take_first();
}

void PacketList::append(QueuedPacket::Ptr packet) {
  cost_ += packet->cost();
  *end_ = packet.release();
  end_ = &(*end_)->next_;
}

QueuedPacket::Ptr PacketList::take_first() {
  QueuedPacket::Ptr packet(first_);
  first_ = packet->next_;
  if (first_ == nullptr) end_ = &first_;
  cost_ -= packet->cost();
  return packet;
}

// Runs on the thread that reads the channel. A burst is logged after the lock is released: writing
// to the log may take long, and the callback thread needs the lock for its next packet.
void IndicationQueue::push(std::span<const uint8_t> packet) {
  Burst ended;
  {
    std::lock_guard lock(mutex_);
    bool is_over = has_drained();
    if (const char* cause = try_queue(packet)) return drop(cause);
    if (is_over) ended = std::exchange(burst_, {});
    changed_.notify_one();
  }
  log(ended);
}

// Checks for a burst before the copy, so that a full queue costs no allocation. `cause` is compared
// by address. The difference does not underflow: packets are queued only up to the bound.
const char* IndicationQueue::try_queue(std::span<const uint8_t> packet) {
  if (burst_.cause == kFull && !has_drained()) return kFull;
  auto queued = QueuedPacket::copy(packet);
  if (queued == nullptr) return kNoMemory;
  if (queued->cost() > bound_ - packets_.cost()) return kFull;
  packets_.append(std::move(queued));
  highest_cost_ = std::max(highest_cost_, packets_.cost());
  return nullptr;
}

// The bytes queued at the beginning of a burst decide when it is over.
void IndicationQueue::drop(const char* cause) {
  if (burst_.dropped == 0) burst_ = {0, cause, packets_.cost()};
  ++burst_.dropped;
}

// Also ends a burst: otherwise it would not be logged until another indication comes.
QueuedPacket::Ptr IndicationQueue::pop() {
  Burst ended;
  QueuedPacket::Ptr packet;
  {
    Lock lock(mutex_);
    wait_for_packet(lock);
    if (stopped_) return nullptr;
    packet = packets_.take_first();
    if (has_drained()) ended = std::exchange(burst_, {});
  }
  log(ended);
  return packet;
}

// release_free_memory() may take long, so it runs without the lock. A packet that is queued
// meanwhile is not missed: wait() checks the list before it sleeps.
void IndicationQueue::wait_for_packet(Lock& lock) {
  if (packets_.empty() && highest_cost_ > kRetainedMemory) {
    highest_cost_ = 0;
    lock.unlock();
    release_free_memory();
    lock.lock();
  }
  changed_.wait(lock, [this] { return stopped_ || !packets_.empty(); });
}

// The callback runs without the lock, so it may send requests or release its client.
void IndicationQueue::call_back(qmi_client_type client, qmi_client_ind_cb callback,
                                void* callback_data) {
  while (auto packet = pop()) {
    auto header = qmi_idl::load_header(packet->bytes());
    if (!header) continue;
    callback(client, header->message_id, packet->bytes().data() + qmi_idl::kHeaderSize,
             header->length, callback_data);
  }
}

// notify_one() is enough: only the callback thread waits.
void IndicationQueue::stop() {
  std::lock_guard lock(mutex_);
  stopped_ = true;
  changed_.notify_one();
}

// Called at the end of the client or the process, when the callback may never return.
void IndicationQueue::report_burst() {
  Burst ended;
  {
    std::lock_guard lock(mutex_);
    ended = std::exchange(burst_, {});
  }
  log(ended);
}

// Called without the lock, see push().
void IndicationQueue::log(const Burst& burst) const {
  if (burst.dropped == 0) return;
  LOGE("Dropped %zu indications: %s, %zu of at most %zu bytes queued", burst.dropped, burst.cause,
       burst.queued, bound_);
}

}  // namespace qmi_cci
