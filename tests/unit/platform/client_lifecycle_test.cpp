// SPDX-License-Identifier: Apache-2.0
// Services that go away and come back, handles, and what a release leaves behind.
#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

class Lifecycle : public Client {
 protected:
  void withdraw() { modem_.withdraw(qorext().id); }
  void publish() { modem_.publish(qorext().id, vendor_instance()); }
};

TEST_P(Lifecycle, AServiceGoneBeforeARequestFailsItAtOnce) {
  open();
  withdraw();
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band), QMI_SERVICE_ERR);
  EXPECT_EQ(read_band(client_, 2, band), QMI_SERVICE_ERR);
}

TEST_P(Lifecycle, AServiceGoneDuringRequestsFailsThemAtOnce) {
  modem_.answer_with(stay_silent);
  open();
  std::vector<std::thread> senders;
  for (uint32_t number = 0; number < 4; ++number) {
    senders.emplace_back([this, number] {
      Band band{};
      EXPECT_EQ(read_band(client_, number, band), QMI_SERVICE_ERR);
    });
  }
  EXPECT_TRUE(eventually([&] { return modem_.request_count() == 4; }));
  withdraw();
  for (auto& sender : senders) sender.join();
}

TEST_P(Lifecycle, AServiceGoneAfterARequestFailsTheNextOne) {
  open();
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band), QMI_NO_ERR);
  withdraw();
  EXPECT_EQ(read_band(client_, 2, band), QMI_SERVICE_ERR);
}

TEST_P(Lifecycle, AServiceThatCameBackServesANewClientAndNotTheOldOne) {
  open();
  withdraw();
  publish();
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band), QMI_SERVICE_ERR);
  EXPECT_EQ(qmi_client_release(client_), QMI_NO_ERR);
  open();
  EXPECT_EQ(read_band(client_, 2, band), QMI_NO_ERR);
  EXPECT_EQ(band.band, 2u);
}

TEST_P(Lifecycle, AnInstanceGoneSinceItWasListedHasNoClient) {
  qmi_service_info info = first_instance();
  withdraw();
  qmi_client_type client = &info;
  EXPECT_EQ(qmi_client_init(&info, vendor(), nullptr, nullptr, nullptr, &client), QMI_SERVICE_ERR);
  EXPECT_EQ(client, nullptr);
}

TEST_P(Lifecycle, AReleaseEndsTheRequestsUnderWay) {
  modem_.answer_with(stay_silent);
  open();
  std::thread sender([this] {
    Band band{};
    EXPECT_EQ(read_band(client_, 1, band), QMI_SERVICE_ERR);
  });
  EXPECT_TRUE(eventually([&] { return modem_.request_count() == 1; }));
  EXPECT_EQ(qmi_client_release(client_), QMI_NO_ERR);
  sender.join();
  client_ = nullptr;
}

TEST_P(Lifecycle, AReleasedHandleIsRefused) {
  open();
  EXPECT_EQ(qmi_client_release(client_), QMI_NO_ERR);
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_release(client_), QMI_INVALID_PARAM_ERR);
  client_ = nullptr;
}

TEST_P(Lifecycle, AReleaseIsSeenByTheModem) {
  open();
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band), QMI_NO_ERR);
  qmi_client_release(client_);
  client_ = nullptr;
  EXPECT_TRUE(eventually([&] { return modem_.peers_gone() == 1; }));
}

TEST_P(Lifecycle, ForeignHandlesAreRefused) {
  Band band{};
  uint64_t foreign = 1;
  for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&foreign)}) {
    EXPECT_EQ(read_band(handle, 1, band), QMI_INVALID_PARAM_ERR);
    EXPECT_EQ(qmi_client_release(handle), QMI_INVALID_PARAM_ERR);
    EXPECT_EQ(qmi_client_message_decode(handle, QMI_IDL_RESPONSE, kReadBand, "", 0, &band, 8),
              QMI_INVALID_PARAM_ERR);
  }
}

TEST_P(Lifecycle, ANotifierIsNoClient) {
  qmi_client_os_params signal{};
  qmi_client_type notifier = nullptr;
  ASSERT_EQ(qmi_client_notifier_init(vendor(), &signal, &notifier), QMI_NO_ERR);
  Band band{};
  EXPECT_EQ(read_band(notifier, 1, band), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_message_decode(notifier, QMI_IDL_RESPONSE, kReadBand, "", 0, &band, 8),
            QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_release(notifier), QMI_NO_ERR);
}

TEST_P(Lifecycle, OnlyRecordsOfTheListOpenAClient) {
  qmi_client_type client = nullptr;
  qmi_service_info blank{};
  EXPECT_EQ(qmi_client_init(&blank, vendor(), nullptr, nullptr, nullptr, &client),
            QMI_INVALID_PARAM_ERR);
  qmi_service_info info = first_instance();
  auto other = nas_get_service_object_internal_v01(1, 175, 6);
  EXPECT_EQ(qmi_client_init(&info, other, nullptr, nullptr, nullptr, &client),
            QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_init(nullptr, vendor(), nullptr, nullptr, nullptr, &client),
            QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_init(&info, nullptr, nullptr, nullptr, nullptr, &client),
            QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_init(&info, vendor(), nullptr, nullptr, nullptr, nullptr),
            QMI_INVALID_PARAM_ERR);
}

TEST_P(Lifecycle, AnEndpointThatMakesNoSenseIsATransportError) {
  qmi_service_info info = first_instance();
  setenv("QOREXT_MODEM", "nonsense", 1);
  unsigned services = 1;
  qmi_client_os_params signal{};
  qmi_client_type handle = nullptr;
  EXPECT_EQ(qmi_client_get_service_list(vendor(), nullptr, nullptr, &services), QMI_TRANSPORT_ERR);
  EXPECT_EQ(services, 0u);
  EXPECT_EQ(qmi_client_notifier_init(vendor(), &signal, &handle), QMI_TRANSPORT_ERR);
  EXPECT_EQ(qmi_client_init(&info, vendor(), nullptr, nullptr, nullptr, &handle),
            QMI_TRANSPORT_ERR);
}

TEST_P(Lifecycle, AClientWithoutCallbackNeedsNoThread) {
  size_t before = own("task");
  open();
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band), QMI_NO_ERR);
  EXPECT_EQ(own("task"), before + (GetParam().has_callback ? 2 : 0));
}

TEST_P(Lifecycle, NothingIsLeftBehind) {
  size_t descriptors = own("fd");
  size_t threads = own("task");
  for (int i = 0; i < 20; ++i) {
    qmi_client_os_params signal{};
    qmi_client_type notifier = nullptr;
    ASSERT_EQ(qmi_client_notifier_init(vendor(), &signal, &notifier), QMI_NO_ERR);
    open();
    Band band{};
    EXPECT_EQ(read_band(client_, 1, band), QMI_NO_ERR);
    if (i % 2 == 0) withdraw();
    EXPECT_EQ(qmi_client_release(client_), QMI_NO_ERR);
    EXPECT_EQ(qmi_client_release(notifier), QMI_NO_ERR);
    if (i % 2 == 0) publish();
  }
  client_ = nullptr;
  EXPECT_TRUE(eventually([&] { return own("fd") == descriptors && own("task") == threads; }))
      << own("fd") << " descriptors of " << descriptors << ", " << own("task") << " threads of "
      << threads;
}

INSTANTIATE_TEST_SUITE_P(Of, Lifecycle, every_setup(), setup_name);

}  // namespace
}  // namespace client_test
