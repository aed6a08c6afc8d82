// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/daemon/process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace qorextctl {

namespace {

constexpr auto kGrace = std::chrono::seconds(2);  // between SIGTERM and SIGKILL

// The arguments of execve(), made before fork() because the child must not allocate memory.
struct Image {
  std::vector<std::string> environment;
  std::vector<char*> argv;
  std::vector<char*> envp;
};

bool overrides(const Launch& launch, std::string_view entry) {
  for (const auto& [name, value] : launch.environment) {
    if (entry.substr(0, entry.find('=')) == name) return true;
  }
  return false;
}

Image make_image(const Launch& launch) {
  Image image;
  for (char** entry = environ; *entry; ++entry) {
    if (!overrides(launch, *entry)) image.environment.emplace_back(*entry);
  }
  for (const auto& [name, value] : launch.environment) {
    image.environment.push_back(fmt::format("{}={}", name, value));
  }
  for (const std::string& argument : launch.arguments) {
    image.argv.push_back(const_cast<char*>(argument.c_str()));
  }
  for (const std::string& entry : image.environment) {
    image.envp.push_back(const_cast<char*>(entry.c_str()));
  }
  image.argv.push_back(nullptr);
  image.envp.push_back(nullptr);
  return image;
}

// Ignored and blocked signals are inherited by execve().
void restore_signals() {
  signal(SIGPIPE, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void run_child(const Launch& launch, const Image& image, int report, int null) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  setpgid(0, 0);  // Ctrl-C at the terminal must reach this program only
  restore_signals();
  dup2(null, STDIN_FILENO);
  if (launch.output >= 0) {
    dup2(launch.output, STDOUT_FILENO);
    dup2(launch.output, STDERR_FILENO);
  }
  syscall(SYS_close_range, STDERR_FILENO + 1, UINT_MAX, CLOSE_RANGE_CLOEXEC);
  for (int fd : launch.descriptors) fcntl(fd, F_SETFD, 0);
  execve(image.argv[0], image.argv.data(), image.envp.data());
  int reason = errno;
  [[maybe_unused]] ssize_t written = write(report, &reason, sizeof reason);
  _exit(127);
}

// Returns the errno of a failed execve(), or 0: the pipe is closed by a successful one.
int failure_of(const UniqueFd& report) {
  int reason = 0;
  ssize_t size = 0;
  do {
    size = read(report.get(), &reason, sizeof reason);
  } while (size < 0 && errno == EINTR);
  return size == sizeof reason ? reason : 0;
}

Error cannot_start(const Launch& launch, int reason) {
  return transport_error(fmt::format("cannot start {}: {}", launch.arguments[0], strerror(reason)));
}

}  // namespace

std::string describe(const ExitStatus& status) {
  if (status.signal == 0) return fmt::format("exit status {}", status.code);
  return fmt::format("signal {} ({})", status.signal, strsignal(status.signal));
}

Result<Process> Process::start(const Launch& launch) {
  Image image = make_image(launch);
  auto report = make_pipe();
  UniqueFd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (!report || !null.valid()) return cannot_start(launch, errno);
  pid_t pid = fork();
  if (pid < 0) return cannot_start(launch, errno);
  if (pid == 0) run_child(launch, image, report->write.get(), null.get());
  Process process(pid, UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))));
  report->write.reset();
  if (int reason = failure_of(report->read)) return cannot_start(launch, reason);
  return process;
}

Process::Process(Process&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      pidfd_(std::move(other.pidfd_)),
      status_(other.status_) {}

Process::~Process() {
  if (pid_ < 0 || status_) return;
  signal(SIGTERM);
  if (wait(Deadline::in(kGrace))) return;
  signal(SIGKILL);
  wait(Deadline::in(kGrace));
}

std::optional<ExitStatus> Process::wait(Deadline deadline) {
  if (status_) return status_;
  pollfd entry{pidfd_.get(), POLLIN, 0};
  while (poll(&entry, 1, deadline.remaining_ms()) < 0 && errno == EINTR) {
  }
  int status = 0;
  if (waitpid(pid_, &status, WNOHANG) != pid_) return std::nullopt;
  status_ = ExitStatus{WIFEXITED(status) ? WEXITSTATUS(status) : 0,
                       WIFSIGNALED(status) ? WTERMSIG(status) : 0};
  return status_;
}

void Process::signal(int number) const {
  if (!status_) kill(pid_, number);
}

std::string sibling(const std::string& name) {
  std::error_code error;
  auto path = std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / name;
  return std::filesystem::exists(path, error) ? path.string() : "";
}

}  // namespace qorextctl
