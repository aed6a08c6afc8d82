// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/product/capture_phone.h"

#include <NativeDropBoxWriter.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdarg>
#include <fstream>
#include <sstream>

namespace {

CapturePhone* g_files = nullptr;

size_t open_descriptors() {
  std::filesystem::directory_iterator entries("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

std::string text_of(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// Returns true and sets errno when the call is scripted to fail.
bool fails(const std::string& call) {
  auto found = g_files->failing.find(call);
  if (found == g_files->failing.end()) return false;
  errno = found->second;
  return true;
}

std::string octal(mode_t mode) {
  char digits[8];
  snprintf(digits, sizeof digits, "0%o", mode);
  return digits;
}

}  // namespace

CapturePhone::CapturePhone() : now(time(nullptr)) {
  std::string name = testing::TempDir() + "phone-XXXXXX";
  EXPECT_NE(mkdtemp(name.data()), nullptr);
  root_ = name;
  setenv("QOREXT_PHONE_ROOT", root_.c_str(), 1);
  setenv("TZ", "UTC0", 1);
  umask_before_ = umask(022);
  descriptors_before_ = open_descriptors();
  g_files = this;
}

CapturePhone::~CapturePhone() {
  g_files = nullptr;
  umask(umask_before_);
  unsetenv("TZ");
  unsetenv("QOREXT_PHONE_ROOT");
  std::filesystem::remove_all(root_);
}

void CapturePhone::TearDown() {
  EXPECT_EQ(open_descriptors(), descriptors_before_);
  EXPECT_THAT(text_of("/proc/self/maps"), testing::Not(testing::HasSubstr(root_)));
}

std::string CapturePhone::phone_path_of(const std::string& path) const {
  return path.compare(0, root_.size(), root_) == 0 ? path.substr(root_.size()) : path;
}

void CapturePhone::make_folder(const std::string& path) const {
  std::filesystem::create_directories(at(path));
}

void CapturePhone::put(const std::string& path, const std::string& content) const {
  std::filesystem::create_directories(at(path).parent_path());
  std::ofstream file(at(path), std::ios::binary | std::ios::trunc);
  file << content;
  EXPECT_TRUE(file.flush()) << path;
}

void CapturePhone::put_link(const std::string& path, const std::string& target) const {
  std::filesystem::create_directories(at(path).parent_path());
  std::filesystem::create_symlink(target, at(path));
}

std::string CapturePhone::content(const std::string& path) const {
  EXPECT_TRUE(std::filesystem::exists(at(path))) << path;
  return text_of(at(path));
}

std::string CapturePhone::target(const std::string& link) const {
  return has(link) ? std::filesystem::read_symlink(at(link)).string() : "";
}

mode_t CapturePhone::mode(const std::string& path) const {
  struct stat status = {};
  EXPECT_EQ(stat(at(path).c_str(), &status), 0) << path;
  return status.st_mode & ALLPERMS;
}

bool CapturePhone::has(const std::string& path) const {
  struct stat status;
  return lstat(at(path).c_str(), &status) == 0;
}

FileSizeLimit::FileSizeLimit(rlim_t size) {
  signal(SIGXFSZ, SIG_IGN);
  getrlimit(RLIMIT_FSIZE, &before_);
  rlimit limit = {size, before_.rlim_max};
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

FileSizeLimit::~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }

bool NativeDropBoxWriter::addText(const char* tag, const char* text) {
  phone().trace.push_back(std::string("call addText ") + tag + " " + text);
  return g_files == nullptr || g_files->drop_box_accepts;
}

// System calls, through the linker's --wrap. Without a CapturePhone they are the real ones.
extern "C" {

time_t __real_time(time_t*);
time_t __wrap_time(time_t* out) { return g_files != nullptr ? g_files->now : __real_time(out); }

int __real_open(const char*, int, ...);
int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  if (g_files == nullptr) return __real_open(path, flags, mode);
  std::string name = g_files->phone_path_of(path);
  g_files->opened[name] = flags;
  return fails("open " + name) ? -1 : __real_open(path, flags, mode);
}

// Only root may change an owner, so the real function is not called.
int __real_chown(const char*, uid_t, gid_t);
int __wrap_chown(const char* path, uid_t owner, gid_t group) {
  if (g_files == nullptr) return __real_chown(path, owner, group);
  phone().trace.push_back("call chown " + g_files->phone_path_of(path) + " " +
                          std::to_string(owner) + " " + std::to_string(group));
  return fails("chown") ? -1 : 0;
}

int __real_chmod(const char*, mode_t);
int __wrap_chmod(const char* path, mode_t mode) {
  if (g_files == nullptr) return __real_chmod(path, mode);
  phone().trace.push_back("call chmod " + g_files->phone_path_of(path) + " " + octal(mode));
  return fails("chmod") ? -1 : __real_chmod(path, mode);
}

int __real_fsync(int);
int __wrap_fsync(int fd) {
  if (g_files == nullptr) return __real_fsync(fd);
  auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd));
  std::string name = g_files->phone_path_of(path);
  phone().trace.push_back("call fsync " + name);
  return fails("fsync " + name) ? -1 : __real_fsync(fd);
}

int __real_ftruncate(int, off_t);
int __wrap_ftruncate(int fd, off_t size) {
  return g_files != nullptr && fails("ftruncate") ? -1 : __real_ftruncate(fd, size);
}

int __real_symlink(const char*, const char*);
int __wrap_symlink(const char* target, const char* link) {
  if (g_files != nullptr && fails("symlink " + g_files->phone_path_of(link))) return -1;
  return __real_symlink(target, link);
}

int __real_rename(const char*, const char*);
int __wrap_rename(const char* from, const char* to) {
  if (g_files == nullptr) return __real_rename(from, to);
  g_files->on_rename(g_files->phone_path_of(to));
  return fails("rename") ? -1 : __real_rename(from, to);
}

// The real function is not called: it would sync every disk of the machine.
void __real_sync();
void __wrap_sync() {
  if (g_files == nullptr) return __real_sync();
  phone().trace.emplace_back("call sync");
}

int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument) {
  if (g_files == nullptr) return __real_pthread_create(thread, attributes, body, argument);
  int detach_state = -1;
  if (attributes != nullptr) {
    size_t guard = 0;
    pthread_attr_getguardsize(attributes, &guard);
    EXPECT_GT(guard, 0u) << "attributes are not initialized";
    pthread_attr_getdetachstate(attributes, &detach_state);
  }
  g_files->threads.push_back({body, argument, detach_state});
  return 0;
}

}  // extern "C"
