#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <span>
#include <vector>

#include "qmi_client.h"

namespace qmi_cci {

// Indications between the thread that reads them and the one that calls back. Unbounded: a callback
// may take long, and none may be lost.
class IndicationQueue {
 public:
  void push(std::span<const uint8_t> packet);
  // Calls back for each indication, in their order, until stop().
  void call_back(qmi_client_type client, qmi_client_ind_cb callback, void* callback_data);
  // What is still queued is dropped.
  void stop();

 private:
  using Packet = std::vector<uint8_t>;

  // False after stop().
  bool pop(Packet& packet);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Packet> packets_;
  bool stopped_ = false;
};

}  // namespace qmi_cci
