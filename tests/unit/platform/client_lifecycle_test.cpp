// SPDX-License-Identifier: Apache-2.0
// Services that go away and come back, handles, and the resources that a release frees.
#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

class Lifecycle : public Client {};

TEST_P(Lifecycle, ARequestFailsAtOnceWhenTheServiceHasGoneAway) {
  open();
  withdraw();
  EXPECT_EQ(code_of(client_), QMI_SERVICE_ERR);
  EXPECT_EQ(code_of(client_), QMI_SERVICE_ERR);
}

TEST_P(Lifecycle, RequestsUnderWayFailAtOnceWhenTheServiceGoesAway) {
  modem_.answer_with(stay_silent);
  open();
  std::thread senders([this] {
    run_senders(0, 4, [&](uint32_t) { EXPECT_EQ(code_of(client_), QMI_SERVICE_ERR); });
  });
  EXPECT_TRUE(eventually([&] { return modem_.request_count() == 4; }));
  withdraw();
  senders.join();
}

TEST_P(Lifecycle, ARequestFailsWhenTheServiceHasGoneAwaySinceTheLastOne) {
  open();
  EXPECT_EQ(code_of(client_), QMI_NO_ERR);
  withdraw();
  EXPECT_EQ(code_of(client_), QMI_SERVICE_ERR);
}

TEST_P(Lifecycle, AServiceThatIsPublishedAgainServesNewClientsOnly) {
  open();
  withdraw();
  publish();
  EXPECT_EQ(code_of(client_), QMI_SERVICE_ERR);
  EXPECT_EQ(release(), QMI_NO_ERR);
  open();
  EXPECT_EQ(read_band(client_, 2), success(2));
}

TEST_P(Lifecycle, AnInstanceThatHasGoneAwaySinceItWasListedCannotBeOpened) {
  qmi_service_info info = first_instance();
  withdraw();
  qmi_client_type client = &info;
  EXPECT_EQ(qmi_client_init(&info, vendor(), nullptr, nullptr, nullptr, &client), QMI_SERVICE_ERR);
  EXPECT_EQ(client, nullptr);
}

TEST_P(Lifecycle, AReleaseFailsTheRequestsUnderWay) {
  modem_.answer_with(stay_silent);
  open();
  std::thread sender([this] { EXPECT_EQ(code_of(client_), QMI_SERVICE_ERR); });
  EXPECT_TRUE(eventually([&] { return modem_.request_count() == 1; }));
  EXPECT_EQ(qmi_client_release(client_), QMI_NO_ERR);
  sender.join();
  client_ = nullptr;
}

TEST_P(Lifecycle, AReleasedHandleIsRefused) {
  open();
  EXPECT_EQ(qmi_client_release(client_), QMI_NO_ERR);
  EXPECT_EQ(code_of(client_), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(release(), QMI_INVALID_PARAM_ERR);
}

TEST_P(Lifecycle, AReleaseIsReportedToTheModem) {
  open();
  EXPECT_EQ(code_of(client_), QMI_NO_ERR);
  release();
  EXPECT_TRUE(eventually([&] { return modem_.peers_gone() == 1; }));
}

TEST_P(Lifecycle, UnknownHandlesAreRefused) {
  Band band{};
  uint64_t foreign = 1;
  for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&foreign)}) {
    EXPECT_EQ(code_of(handle), QMI_INVALID_PARAM_ERR);
    EXPECT_EQ(qmi_client_release(handle), QMI_INVALID_PARAM_ERR);
    EXPECT_EQ(qmi_client_message_decode(handle, QMI_IDL_RESPONSE, kReadBand, "", 0, &band, 8),
              QMI_INVALID_PARAM_ERR);
  }
}

TEST_P(Lifecycle, ANotifierIsNotAClient) {
  qmi_client_os_params signal{};
  qmi_client_type notifier = nullptr;
  ASSERT_EQ(qmi_client_notifier_init(vendor(), &signal, &notifier), QMI_NO_ERR);
  Band band{};
  EXPECT_EQ(code_of(notifier), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_message_decode(notifier, QMI_IDL_RESPONSE, kReadBand, "", 0, &band, 8),
            QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(qmi_client_release(notifier), QMI_NO_ERR);
}

TEST_P(Lifecycle, OnlyRecordsOfTheServiceListOpenAClient) {
  qmi_client_type client = nullptr;
  qmi_service_info blank{};
  qmi_service_info info = first_instance();
  auto other = nas_get_service_object_internal_v01(1, 175, 6);
  auto init = [](qmi_service_info* record, void* service, qmi_client_type* out) {
    return qmi_client_init(record, service, nullptr, nullptr, nullptr, out);
  };
  EXPECT_EQ(init(&blank, vendor(), &client), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(init(&info, other, &client), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(init(nullptr, vendor(), &client), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(init(&info, nullptr, &client), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(init(&info, vendor(), nullptr), QMI_INVALID_PARAM_ERR);
}

TEST_P(Lifecycle, AnInvalidEndpointIsATransportError) {
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

TEST_P(Lifecycle, OnlyAClientWithACallbackHasThreads) {
  size_t before = own_resources().threads;
  open();
  EXPECT_EQ(code_of(client_), QMI_NO_ERR);
  EXPECT_EQ(own_resources().threads, before + (GetParam().has_callback ? 2 : 0));
}

TEST_P(Lifecycle, AReleaseFreesDescriptorsAndThreads) {
  Resources before = own_resources();
  for (int i = 0; i < 20; ++i) {
    qmi_client_os_params signal{};
    qmi_client_type notifier = nullptr;
    ASSERT_EQ(qmi_client_notifier_init(vendor(), &signal, &notifier), QMI_NO_ERR);
    open();
    EXPECT_EQ(code_of(client_), QMI_NO_ERR);
    if (i % 2 == 0) withdraw();
    EXPECT_EQ(release(), QMI_NO_ERR);
    EXPECT_EQ(qmi_client_release(notifier), QMI_NO_ERR);
    if (i % 2 == 0) publish();
  }
  EXPECT_TRUE(eventually([&] { return own_resources() == before; }))
      << own_resources().descriptors << " descriptors, " << before.descriptors << " before; "
      << own_resources().threads << " threads, " << before.threads << " before";
}

INSTANTIATE_TEST_SUITE_P(Of, Lifecycle, every_setup(), setup_name);

}  // namespace
}  // namespace client_test
