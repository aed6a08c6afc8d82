// SPDX-License-Identifier: Apache-2.0
// Finding services: the notifier and the service list.
#include <poll.h>
#include <sys/socket.h>
#include <time.h>

#include "platform/linux/qmi_transport/unix_socket.h"
#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

class Discovery : public testing::TestWithParam<TransportKind> {
 protected:
  Discovery() : place_(GetParam()) {}

  std::unique_ptr<ScriptedModem> start_modem() const {
    return std::make_unique<ScriptedModem>(place_.endpoint(), answer);
  }

  ModemPlace place_;
};

// A notifier and its signal.
struct Notifier {
  Notifier() { memset(&signal, 0xEE, sizeof(signal)); }
  Notifier(const Notifier&) = delete;
  Notifier& operator=(const Notifier&) = delete;
  ~Notifier() {
    if (handle != nullptr) qmi_client_release(handle);
  }

  int start() { return qmi_client_notifier_init(vendor(), &signal, &handle); }

  // Waits as the product does, on the clock that the signal names.
  bool is_raised(std::chrono::milliseconds patience = kPatience) {
    timespec deadline{};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += patience.count() / 1000;
    deadline.tv_nsec += patience.count() % 1000 * 1000000;
    deadline.tv_sec += deadline.tv_nsec / 1000000000;
    deadline.tv_nsec %= 1000000000;
    pthread_mutex_lock(&signal.mutex);
    int result = 0;
    while (signal.sig_set == 0 && result == 0) {
      result = pthread_cond_timedwait(&signal.cond, &signal.mutex, &deadline);
    }
    bool raised = signal.sig_set == 1;
    pthread_mutex_unlock(&signal.mutex);
    return raised;
  }

  void clear() {
    pthread_mutex_lock(&signal.mutex);
    signal.sig_set = 0;
    pthread_mutex_unlock(&signal.mutex);
  }

  qmi_client_os_params signal;
  qmi_client_type handle = nullptr;
};

int list(unsigned& services, qmi_service_info* infos = nullptr, unsigned* entries = nullptr) {
  return qmi_client_get_service_list(vendor(), infos, entries, &services);
}

TEST_P(Discovery, ANotifierSetsUpItsSignal) {
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  EXPECT_EQ(notifier.signal.sig_set, 0u);
  EXPECT_EQ(notifier.signal.timed_out, 0u);
  EXPECT_EQ(notifier.signal.clock, 1u);
  EXPECT_FALSE(notifier.is_raised(50ms));
}

TEST_P(Discovery, ANotifierDoesNotReportAServiceThatIsThere) {
  auto modem = start_modem();
  modem->publish(qorext().id, vendor_instance());
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  unsigned services = 0;
  EXPECT_EQ(list(services), QMI_NO_ERR);
  EXPECT_EQ(services, 1u);
  EXPECT_FALSE(notifier.is_raised(200ms));
}

TEST_P(Discovery, ANotifierReportsAServiceThatComesUpAsSoonAsItHasStarted) {
  auto modem = start_modem();
  for (int i = 0; i < 100; ++i) {
    Notifier notifier;
    ASSERT_EQ(notifier.start(), QMI_NO_ERR);
    modem->publish(qorext().id, vendor_instance());
    ASSERT_TRUE(notifier.is_raised()) << i;
    modem->withdraw(qorext().id);
  }
}

TEST_P(Discovery, ANotifierReportsAServiceThatGoesAndComesBack) {
  auto modem = start_modem();
  modem->publish(qorext().id, vendor_instance());
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  modem->withdraw(qorext().id);
  EXPECT_FALSE(notifier.is_raised(100ms));
  modem->publish(qorext().id, vendor_instance());
  EXPECT_TRUE(notifier.is_raised());
}

// Its addresses may be those of the modem before.
TEST_P(Discovery, ANotifierReportsTheServicesOfAModemThatStartsAgain) {
  auto modem = start_modem();
  modem->publish(qorext().id, vendor_instance());
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  modem.reset();
  EXPECT_FALSE(notifier.is_raised(50ms));
  modem = start_modem();
  modem->publish(qorext().id, vendor_instance());
  EXPECT_TRUE(notifier.is_raised());
}

TEST_P(Discovery, ANotifierTellsOfAServiceThatComesLater) {
  auto modem = start_modem();
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  EXPECT_FALSE(notifier.is_raised(50ms));
  modem->publish(qorext().id, vendor_instance());
  EXPECT_TRUE(notifier.is_raised());
}

TEST_P(Discovery, ANotifierTellsOfEveryInstance) {
  auto modem = start_modem();
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  modem->publish(qorext().id, vendor_instance());
  ASSERT_TRUE(notifier.is_raised());
  notifier.clear();
  modem->publish(qorext().id, vendor_instance() | 0x100);
  EXPECT_TRUE(notifier.is_raised());
}

TEST_P(Discovery, ANotifierDoesNotTellOfOtherServicesAndVersions) {
  auto modem = start_modem();
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  modem->publish(qorext().id + 1, vendor_instance());
  modem->publish(qorext().id, vendor_instance() + 1);
  EXPECT_FALSE(notifier.is_raised(100ms));
}

TEST_P(Discovery, ANotifierOutlivesTheModem) {
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  for (int i = 0; i < 3; ++i) {
    auto modem = start_modem();
    modem->publish(qorext().id, vendor_instance());
    EXPECT_TRUE(notifier.is_raised());
    notifier.clear();
  }
}

TEST_P(Discovery, ANotifierIsReleasedAtOnce) {
  auto before = std::chrono::steady_clock::now();
  for (int i = 0; i < 50; ++i) {
    Notifier notifier;
    ASSERT_EQ(notifier.start(), QMI_NO_ERR);
    ASSERT_EQ(qmi_client_release(notifier.handle), QMI_NO_ERR);
    notifier.handle = nullptr;
  }
  EXPECT_LT(std::chrono::steady_clock::now() - before, 20s);
}

TEST_P(Discovery, ANotifierNeedsAllItsParameters) {
  qmi_client_os_params signal{};
  qmi_client_type handle = nullptr;
  EXPECT_EQ(qmi_client_notifier_init(nullptr, &signal, &handle), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_notifier_init(vendor(), nullptr, &handle), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_notifier_init(vendor(), &signal, nullptr), QMI_INVALID_PARAM_ERR);
}

TEST_P(Discovery, TheListIsEmptyAtOnceWithoutAModem) {
  unsigned services = 9;
  auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(list(services), QMI_SERVICE_ERR);
  EXPECT_EQ(services, 0u);
  EXPECT_LT(std::chrono::steady_clock::now() - before, 900ms);
}

TEST_P(Discovery, TheListIsEmptyWithoutTheService) {
  auto modem = start_modem();
  modem->publish(qorext().id, vendor_instance() + 1);
  modem->publish(3, 1);
  unsigned services = 9;
  unsigned entries = 1;
  qmi_service_info info{};
  EXPECT_EQ(list(services, &info, &entries), QMI_SERVICE_ERR);
  EXPECT_EQ(services, 0u);
  EXPECT_EQ(entries, 0u);
}

TEST_P(Discovery, TheListCountsTheInstances) {
  auto modem = start_modem();
  modem->publish(qorext().id, vendor_instance());
  unsigned services = 0;
  EXPECT_EQ(list(services), QMI_NO_ERR);
  EXPECT_EQ(services, 1u);
  modem->publish(qorext().id, vendor_instance() | 0x100);
  EXPECT_EQ(list(services), QMI_NO_ERR);
  EXPECT_EQ(services, 2u);
}

TEST_P(Discovery, TheListFillsNoMoreRecordsThanThereIsRoomFor) {
  auto modem = start_modem();
  for (uint32_t i = 0; i < 3; ++i) modem->publish(qorext().id, vendor_instance() | i << 8);
  qmi_service_info infos[4] = {};
  unsigned services = 0;
  unsigned entries = 2;
  EXPECT_EQ(list(services, infos, &entries), QMI_NO_ERR);
  EXPECT_EQ(services, 3u);
  EXPECT_EQ(entries, 2u);
  EXPECT_NE(infos[1].opaque[0], 0u);
  EXPECT_EQ(infos[2].opaque[0], 0u);
  entries = 4;
  EXPECT_EQ(list(services, infos, &entries), QMI_NO_ERR);
  EXPECT_EQ(entries, 3u);
  EXPECT_EQ(infos[3].opaque[0], 0u);
}

TEST_P(Discovery, TheListNeedsItsParameters) {
  unsigned services = 0;
  qmi_service_info info{};
  EXPECT_EQ(qmi_client_get_service_list(nullptr, nullptr, nullptr, &services),
            QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_get_service_list(vendor(), nullptr, nullptr, nullptr),
            QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_get_service_list(vendor(), &info, nullptr, &services),
            QMI_INVALID_PARAM_ERR);
}

TEST_P(Discovery, EveryRecordOfTheListOpensAClientOfItsInstance) {
  auto modem = start_modem();
  modem->publish(qorext().id, vendor_instance());
  modem->publish(qorext().id, vendor_instance() | 0x100);
  qmi_service_info infos[2] = {};
  unsigned services = 0;
  unsigned entries = 2;
  ASSERT_EQ(list(services, infos, &entries), QMI_NO_ERR);
  for (qmi_service_info& info : infos) {
    qmi_client_type client = nullptr;
    ASSERT_EQ(qmi_client_init(&info, vendor(), nullptr, nullptr, nullptr, &client), QMI_NO_ERR);
    Band band{};
    EXPECT_EQ(read_band(client, 6, band), QMI_NO_ERR);
    qmi_client_release(client);
  }
}

INSTANTIATE_TEST_SUITE_P(Over, Discovery, every_transport(), kind_name);

// A name service that takes connections and answers none.
class SilentNameService : public testing::Test {
 protected:
  SilentNameService() {
    auto address = qmi_transport::unix_address(place_.socket_path());
    EXPECT_EQ(bind(listener_.get(), reinterpret_cast<sockaddr*>(&*address), sizeof(*address)), 0);
    EXPECT_EQ(listen(listener_.get(), 64), 0);
  }

  static std::chrono::steady_clock::duration time_of_a_list() {
    unsigned services = 9;
    auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(list(services), QMI_SERVICE_ERR);
    EXPECT_EQ(services, 0u);
    return std::chrono::steady_clock::now() - before;
  }

  ModemPlace place_{TransportKind::unix_socket};
  qmi_transport::ScopedFd listener_ = qmi_transport::unix_socket();
};

TEST_F(SilentNameService, IsAskedForItsListForASecond) {
  auto taken = time_of_a_list();
  EXPECT_GE(taken, 900ms);
  EXPECT_LT(taken, 10s);

  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  EXPECT_FALSE(notifier.is_raised(50ms));
}

TEST_F(SilentNameService, CostsASecondOnlyOnce) {
  Notifier notifier;
  auto before = std::chrono::steady_clock::now();
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  EXPECT_GE(std::chrono::steady_clock::now() - before, 900ms);
  for (int i = 0; i < 10; ++i) EXPECT_LT(time_of_a_list(), 500ms);
}

TEST_F(SilentNameService, IsGivenASecondAgainAfterAnAnswer) {
  time_of_a_list();
  listener_ = qmi_transport::ScopedFd();
  {
    ScriptedModem modem(place_.endpoint(), answer);
    unsigned services = 0;
    EXPECT_EQ(list(services), QMI_SERVICE_ERR);
    modem.hold([&] { EXPECT_GE(time_of_a_list(), 900ms); });
  }
}

TEST_F(SilentNameService, HasItsServicesReportedWhenItAnswersAtLast) {
  Notifier notifier;
  ASSERT_EQ(notifier.start(), QMI_NO_ERR);
  listener_ = qmi_transport::ScopedFd();
  ScriptedModem modem(place_.endpoint(), answer);
  modem.publish(qorext().id, vendor_instance());
  EXPECT_TRUE(notifier.is_raised());
}

}  // namespace
}  // namespace client_test
