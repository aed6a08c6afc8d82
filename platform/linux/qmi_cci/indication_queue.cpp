#include "indication_queue.h"

#include "qmi_idl/codec.h"

namespace qmi_cci {

void IndicationQueue::push(std::span<const uint8_t> packet) {
  std::lock_guard lock(mutex_);
  packets_.emplace_back(packet.begin(), packet.end());
  changed_.notify_one();
}

bool IndicationQueue::pop(Packet& packet) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stopped_ || !packets_.empty(); });
  if (stopped_) return false;
  packet = std::move(packets_.front());
  packets_.pop_front();
  return true;
}

void IndicationQueue::call_back(qmi_client_type client, qmi_client_ind_cb callback,
                                void* callback_data) {
  Packet packet;
  while (pop(packet)) {
    auto header = qmi_idl::load_header(packet);
    if (!header) continue;
    callback(client, header->message_id, packet.data() + qmi_idl::kHeaderSize, header->length,
             callback_data);
  }
}

void IndicationQueue::stop() {
  std::lock_guard lock(mutex_);
  stopped_ = true;
  changed_.notify_one();
}

}  // namespace qmi_cci
