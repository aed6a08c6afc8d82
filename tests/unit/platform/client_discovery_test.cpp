// SPDX-License-Identifier: Apache-2.0
// Discovery of services: the notifier and the service list.
#include <poll.h>
#include <sys/socket.h>

#include "platform/linux/qmi_transport/unix_socket.h"
#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

class Discovery : public testing::TestWithParam<TransportKind> {
 protected:
  Discovery() : place_(GetParam()) {}

  void start_modem() { modem_.emplace(place_.endpoint(), answer); }
  void publish(uint32_t number = 0) { modem_->publish(qorext().id, vendor_instance(number)); }
  void withdraw() { modem_->withdraw(qorext().id); }

  ModemPlace place_;
  std::optional<ScriptedModem> modem_;
};

// A notifier that is started, and its signal.
struct Notifier {
  Notifier() {
    memset(&signal, 0xEE, sizeof(signal));
    EXPECT_EQ(qmi_client_notifier_init(vendor(), &signal, &handle), QMI_NO_ERR);
  }
  Notifier(const Notifier&) = delete;
  Notifier& operator=(const Notifier&) = delete;
  ~Notifier() {
    if (handle != nullptr) qmi_client_release(handle);
  }

  // Waits as the product does: on the condition variable, with a deadline of CLOCK_MONOTONIC.
  bool is_raised(std::chrono::milliseconds timeout = kTimeout) {
    auto end = (std::chrono::steady_clock::now() + timeout).time_since_epoch();
    auto seconds = std::chrono::floor<std::chrono::seconds>(end);
    timespec deadline{seconds.count(), std::chrono::nanoseconds(end - seconds).count()};
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

// The result of a list: code and number of services.
using Listing = std::pair<int, unsigned>;

Listing list(qmi_service_info* infos = nullptr, unsigned* entries = nullptr) {
  unsigned services = 9;
  int code = qmi_client_get_service_list(vendor(), infos, entries, &services);
  return {code, services};
}
const Listing kNoServices = {QMI_SERVICE_ERR, 0};

TEST_P(Discovery, ANotifierInitialisesItsSignal) {
  Notifier notifier;
  EXPECT_EQ(notifier.signal.sig_set, 0u);
  EXPECT_EQ(notifier.signal.timed_out, 0u);
  EXPECT_EQ(notifier.signal.clock, 1u);
  EXPECT_FALSE(notifier.is_raised(50ms));
}

TEST_P(Discovery, ANotifierDoesNotReportAServiceThatIsUpAlready) {
  start_modem();
  publish();
  Notifier notifier;
  EXPECT_EQ(list(), Listing(QMI_NO_ERR, 1));
  EXPECT_FALSE(notifier.is_raised(200ms));
}

TEST_P(Discovery, ANotifierReportsAServiceThatComesUpAsSoonAsItHasStarted) {
  start_modem();
  for (int i = 0; i < 100; ++i) {
    Notifier notifier;
    publish();
    ASSERT_TRUE(notifier.is_raised()) << i;
    withdraw();
  }
}

TEST_P(Discovery, ANotifierReportsAServiceThatGoesAndComesBack) {
  start_modem();
  publish();
  Notifier notifier;
  withdraw();
  EXPECT_FALSE(notifier.is_raised(100ms));
  publish();
  EXPECT_TRUE(notifier.is_raised());
}

// The new modem may have the addresses of the old one.
TEST_P(Discovery, ANotifierReportsTheServicesOfAModemThatStartsAgain) {
  start_modem();
  publish();
  Notifier notifier;
  modem_.reset();
  EXPECT_FALSE(notifier.is_raised(50ms));
  start_modem();
  publish();
  EXPECT_TRUE(notifier.is_raised());
}

TEST_P(Discovery, ANotifierReportsAServiceThatComesUpLater) {
  start_modem();
  Notifier notifier;
  EXPECT_FALSE(notifier.is_raised(50ms));
  publish();
  EXPECT_TRUE(notifier.is_raised());
}

TEST_P(Discovery, ANotifierReportsEveryInstance) {
  start_modem();
  Notifier notifier;
  publish();
  ASSERT_TRUE(notifier.is_raised());
  notifier.clear();
  publish(1);
  EXPECT_TRUE(notifier.is_raised());
}

TEST_P(Discovery, ANotifierDoesNotReportOtherServicesAndVersions) {
  start_modem();
  Notifier notifier;
  modem_->publish(qorext().id + 1, vendor_instance());
  modem_->publish(qorext().id, vendor_instance() + 1);
  EXPECT_FALSE(notifier.is_raised(100ms));
}

TEST_P(Discovery, ANotifierOutlivesTheModem) {
  Notifier notifier;
  for (int i = 0; i < 3; ++i) {
    start_modem();
    publish();
    EXPECT_TRUE(notifier.is_raised());
    notifier.clear();
  }
}

TEST_P(Discovery, ANotifierIsReleasedAtOnce) {
  auto before = std::chrono::steady_clock::now();
  for (int i = 0; i < 50; ++i) {
    Notifier notifier;
    ASSERT_EQ(qmi_client_release(notifier.handle), QMI_NO_ERR);
    notifier.handle = nullptr;
  }
  EXPECT_LT(std::chrono::steady_clock::now() - before, 20s);
}

TEST_P(Discovery, ANotifierRequiresAllItsParameters) {
  qmi_client_os_params signal{};
  qmi_client_type handle = nullptr;
  EXPECT_EQ(qmi_client_notifier_init(nullptr, &signal, &handle), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_notifier_init(vendor(), nullptr, &handle), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_notifier_init(vendor(), &signal, nullptr), QMI_INVALID_PARAM_ERR);
}

TEST_P(Discovery, TheListIsEmptyAtOnceWithoutAModem) {
  auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(list(), kNoServices);
  EXPECT_LT(std::chrono::steady_clock::now() - before, 900ms);
}

TEST_P(Discovery, TheListIsEmptyWithoutTheService) {
  start_modem();
  modem_->publish(qorext().id, vendor_instance() + 1);
  modem_->publish(3, 1);
  unsigned entries = 1;
  qmi_service_info info{};
  EXPECT_EQ(list(&info, &entries), kNoServices);
  EXPECT_EQ(entries, 0u);
}

TEST_P(Discovery, TheListCountsTheInstances) {
  start_modem();
  publish();
  EXPECT_EQ(list(), Listing(QMI_NO_ERR, 1));
  publish(1);
  EXPECT_EQ(list(), Listing(QMI_NO_ERR, 2));
}

TEST_P(Discovery, TheListStoresNoMoreRecordsThanThereIsRoomFor) {
  start_modem();
  for (uint32_t i = 0; i < 3; ++i) publish(i);
  qmi_service_info infos[4] = {};
  unsigned entries = 2;
  EXPECT_EQ(list(infos, &entries), Listing(QMI_NO_ERR, 3));
  EXPECT_EQ(entries, 2u);
  EXPECT_NE(infos[1].opaque[0], 0u);
  EXPECT_EQ(infos[2].opaque[0], 0u);
  entries = 4;
  EXPECT_EQ(list(infos, &entries), Listing(QMI_NO_ERR, 3));
  EXPECT_EQ(entries, 3u);
  EXPECT_EQ(infos[3].opaque[0], 0u);
}

TEST_P(Discovery, TheListRequiresItsParameters) {
  unsigned services = 0;
  qmi_service_info info{};
  auto get = [](void* service, qmi_service_info* infos, unsigned* count) {
    return qmi_client_get_service_list(service, infos, nullptr, count);
  };
  EXPECT_EQ(get(nullptr, nullptr, &services), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(get(vendor(), nullptr, nullptr), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(get(vendor(), &info, &services), QMI_INVALID_PARAM_ERR);
}

TEST_P(Discovery, EveryRecordOfTheListOpensAClientOfItsInstance) {
  start_modem();
  publish();
  publish(1);
  qmi_service_info infos[2] = {};
  unsigned entries = 2;
  ASSERT_EQ(list(infos, &entries), Listing(QMI_NO_ERR, 2));
  for (qmi_service_info& info : infos) {
    qmi_client_type client = nullptr;
    ASSERT_EQ(qmi_client_init(&info, vendor(), nullptr, nullptr, nullptr, &client), QMI_NO_ERR);
    EXPECT_EQ(code_of(client), QMI_NO_ERR);
    qmi_client_release(client);
  }
}

INSTANTIATE_TEST_SUITE_P(Over, Discovery, every_transport(), kind_name);

// A name service that accepts connections and does not answer.
class SilentNameService : public testing::Test {
 protected:
  SilentNameService() {
    auto address = qmi_transport::unix_address(place_.socket_path());
    EXPECT_EQ(bind(listener_.get(), reinterpret_cast<sockaddr*>(&*address), sizeof(*address)), 0);
    EXPECT_EQ(listen(listener_.get(), 64), 0);
  }

  static std::chrono::steady_clock::duration time_of_a_list() {
    auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(list(), kNoServices);
    return std::chrono::steady_clock::now() - before;
  }

  ModemPlace place_{TransportKind::unix_socket};
  qmi_transport::ScopedFd listener_ = qmi_transport::unix_socket();
};

TEST_F(SilentNameService, IsGivenASecondToAnswer) {
  auto taken = time_of_a_list();
  EXPECT_GE(taken, 900ms);
  EXPECT_LT(taken, 10s);

  Notifier notifier;
  EXPECT_FALSE(notifier.is_raised(50ms));
}

TEST_F(SilentNameService, DelaysOnlyTheFirstCallByASecond) {
  auto before = std::chrono::steady_clock::now();
  Notifier notifier;
  EXPECT_GE(std::chrono::steady_clock::now() - before, 900ms);
  for (int i = 0; i < 10; ++i) EXPECT_LT(time_of_a_list(), 500ms);
}

TEST_F(SilentNameService, IsGivenASecondAgainAfterAnAnswer) {
  time_of_a_list();
  listener_ = qmi_transport::ScopedFd();
  {
    ScriptedModem modem(place_.endpoint(), answer);
    EXPECT_EQ(list(), kNoServices);
    modem.hold([&] { EXPECT_GE(time_of_a_list(), 900ms); });
  }
}

TEST_F(SilentNameService, HasItsServicesReportedWhenItAnswersLater) {
  Notifier notifier;
  listener_ = qmi_transport::ScopedFd();
  ScriptedModem modem(place_.endpoint(), answer);
  modem.publish(qorext().id, vendor_instance());
  EXPECT_TRUE(notifier.is_raised());
}

}  // namespace
}  // namespace client_test
