// SPDX-License-Identifier: Apache-2.0
// Clients that take more than their share: of descriptors, of connections, of the modem's time.
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

  // The modem can open this many descriptors from now on.
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

  // What it uses within half a second.
  milliseconds processor_time_of_a_while() const {
    milliseconds before = processor_time();
    std::this_thread::sleep_for(milliseconds(500));
    return processor_time() - before;
  }

  // Waits while too many others wait to be accepted.
  ScopedFd silent_connection() const {
    auto deadline = Clock::now() + kPatience;
    ScopedFd socket = qmi_transport::unix_connect(endpoint.path);
    while (!socket && Clock::now() < deadline) socket = qmi_transport::unix_connect(endpoint.path);
    EXPECT_TRUE(socket);
    return socket;
  }

  // A connection to the services that has asked for their names.
  ScopedFd watcher() const {
    ScopedFd socket = qmi_transport::unix_connect(endpoint.path);
    auto lookup = qmi_transport::encode_control({QRTR_TYPE_NEW_LOOKUP, {.service = 3}});
    qmi_transport::unix_send(socket.get(), lookup, Clock::now() + kPatience);
    return socket;
  }

  // As many connections as the modem has descriptors left.
  std::vector<ScopedFd> take_descriptors(size_t count) {
    std::vector<ScopedFd> taken;
    while (taken.size() < count) {
      taken.push_back(watcher());
      EXPECT_TRUE(wait_readable(taken.back().get()));
    }
    return taken;
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
  EXPECT_LT(processor_time_of_a_while(), kIdle);
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
  EXPECT_EQ(taken->command({{"command", "version"}})["ok"], true);
  ControlClient waiting(control_path);
  waiting.send_text("{\"command\":\"version\"}\n");
  EXPECT_LT(processor_time_of_a_while(), kIdle);
  EXPECT_THAT(text_of("errors"), HasSubstr("no descriptors are left"));

  taken.reset();
  EXPECT_EQ(json::parse(waiting.read_line())["ok"], true);
}

TEST_F(Overload, WithoutDescriptorsASilentConnectionGivesWay) {
  start();
  leave_descriptors(4);
  std::vector<ScopedFd> silent;
  for (int i = 0; i < 4; ++i) silent.push_back(silent_connection());
  EXPECT_TRUE(serves_a_new_client());
}

TEST_F(Overload, SilentConnectionsDoNotKeepClientsOut) {
  start();
  ServiceClient before(endpoint, modem::qorext_service());
  std::vector<ScopedFd> silent;
  for (int i = 0; i < 300; ++i) silent.push_back(silent_connection());
  EXPECT_TRUE(wait_readable(silent[40].get()));  // closed: nearly all have been accepted
  EXPECT_TRUE(serves_a_new_client());
  EXPECT_EQ(before.ask("get_bsr_timer")["timer"], 300);
}

TEST_F(Overload, SilentControlConnectionsDoNotKeepOthersOut) {
  start();
  ControlClient before(control_path);
  EXPECT_EQ(before.command({{"command", "version"}})["ok"], true);
  std::vector<std::unique_ptr<ControlClient>> silent;
  for (int i = 0; i < 80; ++i) silent.push_back(std::make_unique<ControlClient>(control_path));
  EXPECT_EQ(ControlClient(control_path).command({{"command", "version"}})["ok"], true);
  EXPECT_EQ(before.command({{"command", "version"}})["ok"], true);
}

// Each fills 100000 packets of 512 bytes of data.
void send_burst(ControlClient& control) {
  EXPECT_EQ(control.command({{"command", "indicate"},
                             {"indication", "utils"},
                             {"fields", {{"type", 9}, {"data", std::string(1024, '5')}}},
                             {"count", 100000}})["ok"],
            true);
}

TEST_F(Overload, ClientThatDoesNotReadHoldsUpNobody) {
  start();
  ServiceClient deaf(endpoint, modem::qorext_service());
  deaf.ask("get_bsr_timer");
  ControlClient control(control_path);
  auto begin = Clock::now();
  send_burst(control);
  EXPECT_TRUE(serves_a_new_client());
  EXPECT_LT(Clock::now() - begin, seconds(10));
  EXPECT_EQ(text_of("errors"), "");

  // A whole burst waits for it; a second one is more than it may leave unread.
  send_burst(control);
  EXPECT_TRUE(serves_a_new_client());
  EXPECT_LT(Clock::now() - begin, seconds(20));
  EXPECT_THAT(text_of("errors"),
              ::testing::MatchesRegex("qorext_modem: client [0-9]+ of qorext is closed: it has not "
                                      "read [0-9]+ bytes\n"));
}

TEST_F(Overload, UploadGoesOnForOthersWhenAClientStopsReading) {
  start();
  ServiceClient deaf(endpoint, modem::qorext_service());
  ServiceClient reader(endpoint, modem::qorext_service());
  deaf.ask("get_bsr_timer");
  reader.ask("get_bsr_timer");
  std::ofstream(file("log")) << std::string(2000000, 'k');
  ControlClient control(control_path);
  auto begin = Clock::now();
  EXPECT_EQ(control.command({{"command", "kpi"}, {"file", file("log")}})["ok"], true);
  for (int i = 0; i < 2000000 / 502; ++i) ASSERT_EQ(reader.next_fields()["type"], 1) << i;
  EXPECT_LT(Clock::now() - begin, seconds(10));
}

}  // namespace
