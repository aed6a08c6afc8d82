// SPDX-License-Identifier: Apache-2.0
// Exchanges a second of the QMI client library, and of a bare send and receive of the same packets
// on the same transport, in alternating turns. Threads with bare packets have a socket each;
// threads with clients share one, with and without a callback, or have one each. Prints JSON.
//
//   bench_exchange ROUNDS          starts a modem; on one core and on two
//   bench_exchange ROUNDS MODEM    uses the modem at "unix:PATH" or "qrtr"
#include <cstdlib>
#include <functional>
#include <iostream>
#include <thread>

#include "bench/raw_channel.h"
#include "bench/rig.h"
#include "network_access_service_v01.h"
#include "qmi_client.h"

namespace {

using nlohmann::json;

constexpr int kExchangesPerTurn = 500;
constexpr unsigned int kTimeoutMs = 15000;

constexpr uint32_t kNas = 3;
constexpr unsigned int kGetServingSystem = 0x24;
constexpr size_t kResponseSize = 1508;
constexpr uint8_t kPacket[] = {0, 1, 0, kGetServingSystem, 0, 0, 0};

class Client {
 public:
  explicit Client(qmi_client_ind_cb callback) {
    auto service = nas_get_service_object_internal_v01(1, 175, 6);
    qmi_service_info info;
    unsigned int entries = 1;
    unsigned int services = 0;
    int rc = qmi_client_get_service_list(service, &info, &entries, &services);
    if (rc == QMI_NO_ERR) {
      rc = qmi_client_init(&info, service, callback, nullptr, nullptr, &client_);
    }
    if (rc != QMI_NO_ERR) throw std::runtime_error("cannot initialise a client of the modem");
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client() { qmi_client_release(client_); }

  void exchange() {
    uint8_t response[kResponseSize];
    int rc = qmi_client_send_msg_sync(client_, kGetServingSystem, nullptr, 0, response,
                                      sizeof response, kTimeoutMs);
    if (rc != QMI_NO_ERR) throw std::runtime_error("no response");
  }

 private:
  qmi_client_type client_ = nullptr;
};

void ignore(qmi_client_type, unsigned int, void*, unsigned int, void*) {}

class Echo {
 public:
  Echo() : channel_(bench::open_raw_channel(kNas)) {}
  void exchange() { bench::exchange_raw(*channel_, kPacket, response_); }

 private:
  std::unique_ptr<qmi_transport::Channel> channel_;
  std::vector<uint8_t> response_ = std::vector<uint8_t>(qmi_transport::kMaxPacketSize);
};

// One exchange of a thread.
using Exchange = std::function<void(size_t thread)>;

// Returns the exchanges a second of all threads.
double take_turn(size_t threads, const Exchange& exchange) {
  double start = bench::now();
  std::vector<std::jthread> others;
  auto work = [&exchange](size_t thread) {
    for (int i = 0; i < kExchangesPerTurn; ++i) exchange(thread);
  };
  for (size_t i = 1; i < threads; ++i) others.emplace_back(work, i);
  work(0);
  others.clear();
  return static_cast<double>(threads) * kExchangesPerTurn / (bench::now() - start);
}

struct Kind {
  const char* rate;   // its name in the results; null: not reported
  const char* ratio;  // the name of its ratio to the bare rate; null: the bare rate itself
  Exchange exchange;
};

// Ratios are those of neighbouring turns, so that other load of the machine affects both sides.
json compare(size_t threads, int rounds) {
  Client plain(nullptr);
  Client listening(ignore);
  std::vector<Echo> echoes(threads);
  std::vector<std::unique_ptr<Client>> own;
  for (size_t i = 0; i < threads; ++i) own.push_back(std::make_unique<Client>(nullptr));
  const Kind kinds[] = {
      {"echo_per_s", nullptr, [&](size_t thread) { echoes[thread].exchange(); }},
      {"client_per_s", "client_to_echo", [&](size_t) { plain.exchange(); }},
      {"listening_client_per_s", "listening_client_to_echo", [&](size_t) { listening.exchange(); }},
      {nullptr, "own_client_to_echo", [&](size_t thread) { own[thread]->exchange(); }}};
  bench::Figures figures;
  for (int round = 0; round < rounds; ++round) {
    double bare = 0;
    for (const auto& [rate, ratio, exchange] : kinds) {
      double per_s = take_turn(threads, exchange);
      if (!ratio) bare = per_s;
      if (rate) figures[rate].push_back(per_s);
      if (ratio) figures[ratio].push_back(per_s / bare);
    }
  }
  return bench::medians(figures);
}

json compare_all(const bench::Rig& rig, bench::Spread spread, int rounds) {
  setenv("QOREXT_MODEM", rig.modem().c_str(), 1);
  bench::bind_as_daemon(spread);
  return {{"one_thread", compare(1, rounds)}, {"four_threads", compare(4, rounds)}};
}

json compare_on(bench::Spread spread, int rounds) {
  return compare_all(bench::Rig(bench::kQuickModemProgram, spread), spread, rounds);
}

}  // namespace

int main(int argc, char** argv) {
  int rounds = argc > 1 ? std::atoi(argv[1]) : 1;
  json results;
  if (argc > 2) {
    results = {{argv[2], compare_all(bench::Rig(argv[2]), bench::Spread::free, rounds)}};
  } else {
    results = {{"one_core", compare_on(bench::Spread::one_core, rounds)},
               {"two_cores", compare_on(bench::Spread::two_cores, rounds)}};
  }
  std::cout << results.dump() << std::endl;
}
