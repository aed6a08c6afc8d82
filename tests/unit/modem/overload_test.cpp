// SPDX-License-Identifier: Apache-2.0
// Clients that use up descriptors, connections or the modem's time.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <time.h>

#include "modem/messages/services.h"
#include "platform/linux/qmi_transport/control.h"
#include "platform/linux/qmi_transport/unix_socket.h"
#include "platform/linux/qmi_transport/wait.h"
#include "tests/unit/modem/modem_process.h"

namespace {

using qmi_transport::ScopedFd;
using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::HasSubstr;

class Overload : public ModemProcess {
 protected:
  bool has_open(size_t descriptor) const {
    return std::filesystem::is_symlink("/proc/" + std::to_string(pid_) + "/fd/" +
                                       std::to_string(descriptor));
  }

  // From now on the modem can open this many more descriptors.
  void leave_descriptors(size_t count) const {
    rlimit limit{0, 4096};
    for (size_t left = count + 1; left != 0; ++limit.rlim_cur)
      left -= has_open(limit.rlim_cur) ? 0 : 1;
    --limit.rlim_cur;
    ASSERT_EQ(prlimit(pid_, RLIMIT_NOFILE, &limit, nullptr), 0);
  }

  milliseconds processor_time() const {
    clockid_t clock{};
    timespec time{};
    EXPECT_EQ(clock_getcpuclockid(pid_, &clock), 0);
    EXPECT_EQ(clock_gettime(clock, &time), 0);
    return seconds(time.tv_sec) + milliseconds(time.tv_nsec / 1000000);
  }

  // Within half a second.
  milliseconds processor_time_used() const {
    milliseconds before = processor_time();
    std::this_thread::sleep_for(milliseconds(500));
    return processor_time() - before;
  }

  // Retries while the listen queue is full.
  ScopedFd silent_connection() const {
    auto deadline = Clock::now() + kTimeout;
    ScopedFd socket = qmi_transport::unix_connect(endpoint.path);
    while (!socket && Clock::now() < deadline) socket = qmi_transport::unix_connect(endpoint.path);
    EXPECT_TRUE(socket);
    return socket;
  }

  // A connection that has sent a lookup of the services.
  ScopedFd watcher() const {
    ScopedFd socket = qmi_transport::unix_connect(endpoint.path);
    auto lookup = qmi_transport::encode_control({QRTR_TYPE_NEW_LOOKUP, {.service = 3}});
    qmi_transport::unix_send(socket.get(), lookup, Clock::now() + kTimeout);
    return socket;
  }

  std::vector<ScopedFd> take_descriptors(size_t count) {
    std::vector<ScopedFd> taken;
    while (taken.size() < count) {
      taken.push_back(watcher());
      EXPECT_TRUE(wait_readable(taken.back().get()));
    }
    return taken;
  }

  // 100000 indications with 512 bytes of data each.
  void send_burst() {
    json fields = {{"type", 9}, {"data", std::string(1024, '5')}};
    EXPECT_EQ(
        command("indicate", {{"indication", "utils"}, {"fields", fields}, {"count", 100000}})["ok"],
        true);
  }

  bool serves_a_new_client() const {
    ServiceClient client(endpoint, modem::dms_service());
    const json code = {{"code", "323436383130"}};
    return client.is_open() && client.ask("verify_subsidy_lock", code)["result"]["result"] == 0;
  }
};

constexpr milliseconds kIdle{100};

TEST_F(Overload, WithoutDescriptorsClientsWaitAndTheModemDoesNotSpin) {
  start();
  leave_descriptors(4);
  std::vector<ScopedFd> taken = take_descriptors(4);
  ScopedFd waiting = watcher();
  EXPECT_LT(processor_time_used(), kIdle);
  EXPECT_FALSE(qmi_transport::wait_for(waiting.get(), POLLIN, qmi_transport::Deadline::min()));
  EXPECT_THAT(text_of("errors"), HasSubstr("no descriptors are left"));

  taken.clear();
  EXPECT_TRUE(wait_readable(waiting.get()));
  leave_descriptors(8);
  EXPECT_TRUE(serves_a_new_client());
}

TEST_F(Overload, WithoutDescriptorsControlConnectionsWaitAndTheModemDoesNotSpin) {
  start();
  leave_descriptors(1);
  auto taken = std::make_unique<ControlClient>(control_path);
  EXPECT_EQ(taken->command("version")["ok"], true);
  ControlClient waiting(control_path);
  waiting.send_text("{\"command\":\"version\"}\n");
  EXPECT_LT(processor_time_used(), kIdle);
  EXPECT_THAT(text_of("errors"), HasSubstr("no descriptors are left"));

  taken.reset();
  EXPECT_EQ(waiting.read_json()["ok"], true);
}

TEST_F(Overload, WithoutDescriptorsASilentConnectionIsClosed) {
  start();
  leave_descriptors(4);
  std::vector<ScopedFd> silent;
  for (int i = 0; i < 4; ++i) silent.push_back(silent_connection());
  EXPECT_TRUE(serves_a_new_client());
}

TEST_F(Overload, SilentConnectionsDoNotPreventNewClients) {
  ServiceClient before = start_with_client();
  std::vector<ScopedFd> silent;
  for (int i = 0; i < 300; ++i) silent.push_back(silent_connection());
  EXPECT_TRUE(wait_readable(silent[40].get()));  // closed: nearly all have been accepted
  EXPECT_TRUE(serves_a_new_client());
  EXPECT_EQ(before.ask("get_bsr_timer")["timer"], 300);
}

TEST_F(Overload, SilentControlConnectionsDoNotPreventNewOnes) {
  start();
  ControlClient before(control_path);
  EXPECT_EQ(before.command("version")["ok"], true);
  std::vector<std::unique_ptr<ControlClient>> silent;
  for (int i = 0; i < 80; ++i) silent.push_back(std::make_unique<ControlClient>(control_path));
  EXPECT_EQ(ControlClient(control_path).command("version")["ok"], true);
  EXPECT_EQ(before.command("version")["ok"], true);
}

TEST_F(Overload, ClientThatDoesNotReadDoesNotDelayOthers) {
  ServiceClient stuck = start_with_client();
  stuck.ask("get_bsr_timer");
  auto begin = Clock::now();
  send_burst();
  EXPECT_TRUE(serves_a_new_client());
  EXPECT_LT(Clock::now() - begin, seconds(10));
  EXPECT_EQ(text_of("errors"), "");

  // One burst fits into the unread data that a client may have; a second one does not.
  send_burst();
  EXPECT_TRUE(serves_a_new_client());
  EXPECT_LT(Clock::now() - begin, seconds(20));
  EXPECT_THAT(text_of("errors"),
              ::testing::MatchesRegex("qorext_modem: client [0-9]+ of qorext is closed: it has not "
                                      "read [0-9]+ bytes\n"));
}

TEST_F(Overload, UploadContinuesForOthersWhenAClientStopsReading) {
  ServiceClient stuck = start_with_client();
  ServiceClient reader(endpoint);
  stuck.ask("get_bsr_timer");
  reader.ask("get_bsr_timer");
  std::ofstream(file("log")) << std::string(2000000, 'k');
  auto begin = Clock::now();
  EXPECT_EQ(command("kpi", {{"file", file("log")}})["ok"], true);
  for (int i = 0; i < 2000000 / 502; ++i) ASSERT_EQ(reader.next_fields()["type"], 1) << i;
  EXPECT_LT(Clock::now() - begin, seconds(10));
}

}  // namespace
