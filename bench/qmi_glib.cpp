// SPDX-License-Identifier: Apache-2.0
// Exchanges a second of libqmi-glib, consecutive, on the kernel's QRTR: NAS "Get Serving System",
// as in bench_exchange. Prints one number.
//
//   bench_qmi_glib COUNT
#include <libqmi-glib.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr guint kLookupMs = 2000;
constexpr guint kTimeoutSeconds = 15;

[[noreturn]] void fail(const char* what, const GError* error) {
  fprintf(stderr, "bench_qmi_glib: %s: %s\n", what,
          error != nullptr ? error->message : "not found");
  exit(EXIT_FAILURE);
}

void keep(GObject*, GAsyncResult* result, gpointer place) {
  *static_cast<GAsyncResult**>(place) = G_ASYNC_RESULT(g_object_ref(result));
}

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
using Result = std::unique_ptr<GAsyncResult, Unref>;

// Begins an asynchronous call and runs the main loop until its callback.
template <typename Begin>
Result wait_for(Begin begin) {
  GAsyncResult* result = nullptr;
  begin(keep, &result);
  while (result == nullptr) g_main_context_iteration(nullptr, TRUE);
  return Result(result);
}

// Returns the first node with the service.
QrtrNode* find_node(QrtrBus* bus, guint service) {
  for (GList* each = qrtr_bus_peek_nodes(bus); each != nullptr; each = each->next) {
    auto* node = QRTR_NODE(each->data);
    if (qrtr_node_lookup_port(node, service) >= 0) return node;
  }
  fail("a modem", nullptr);
}

QmiDevice* open_device(QrtrNode* node) {
  GError* error = nullptr;
  auto made = wait_for([&](GAsyncReadyCallback done, gpointer place) {
    qmi_device_new_from_node(node, nullptr, done, place);
  });
  QmiDevice* device = qmi_device_new_from_node_finish(made.get(), &error);
  if (device == nullptr) fail("the device", error);
  auto opened = wait_for([&](GAsyncReadyCallback done, gpointer place) {
    qmi_device_open(device, QMI_DEVICE_OPEN_FLAGS_NONE, kTimeoutSeconds, nullptr, done, place);
  });
  if (!qmi_device_open_finish(device, opened.get(), &error)) fail("opening the device", error);
  return device;
}

QmiClientNas* open_client(QmiDevice* device) {
  GError* error = nullptr;
  auto allocated = wait_for([&](GAsyncReadyCallback done, gpointer place) {
    qmi_device_allocate_client(device, QMI_SERVICE_NAS, QMI_CID_NONE, kTimeoutSeconds, nullptr,
                               done, place);
  });
  QmiClient* client = qmi_device_allocate_client_finish(device, allocated.get(), &error);
  if (client == nullptr) fail("a client", error);
  return QMI_CLIENT_NAS(client);
}

void exchange(QmiClientNas* client) {
  GError* error = nullptr;
  auto answered = wait_for([&](GAsyncReadyCallback done, gpointer place) {
    qmi_client_nas_get_serving_system(client, nullptr, kTimeoutSeconds, nullptr, done, place);
  });
  auto* output = qmi_client_nas_get_serving_system_finish(client, answered.get(), &error);
  if (output == nullptr) fail("a response", error);
  if (!qmi_message_nas_get_serving_system_output_get_result(output, &error))
    fail("the result", error);
  qmi_message_nas_get_serving_system_output_unref(output);
}

}  // namespace

int main(int argc, char** argv) {
  int count = argc > 1 ? atoi(argv[1]) : 1000;
  GError* error = nullptr;
  auto looked = wait_for([](GAsyncReadyCallback done, gpointer place) {
    qrtr_bus_new(kLookupMs, nullptr, done, place);
  });
  QrtrBus* bus = qrtr_bus_new_finish(looked.get(), &error);
  if (bus == nullptr) fail("the bus", error);
  QmiClientNas* client = open_client(open_device(find_node(bus, QMI_SERVICE_NAS)));

  exchange(client);
  auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < count; ++i) exchange(client);
  std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  printf("%.1f\n", count / taken.count());
}
