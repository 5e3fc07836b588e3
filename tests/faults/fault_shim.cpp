// A library that the loader puts before the system's: it passes the program's system calls and allocations
// on, counts them, and lets one go wrong. What and when stands in the environment:
//
//   ZAN_FAULT_LINE   n: calls count after the n-th line of standard input was read, until more is wanted
//   ZAN_FAULT_CALL   n: the call that goes wrong, from 1
//   ZAN_FAULT        how: the number of an error; "short": writes take half; "kill": the process is killed
//                    before the call; "kill-after": after it, and a write has taken half; "full": from that
//                    call on there is no room on any disk
//   ZAN_FAULT_LOG    a file to which the counted calls are appended, name and path or descriptor
//   ZAN_FAULT_MEMORY n: the allocation that fails; "n+": and all that follow
//
// Calls on the standard streams do not count, and nothing is really synced: only a loss of power could tell,
// and the log shows the calls.
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/xattr.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

enum class Fault { none, error, short_write, kill, kill_after, full };

long number(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? 0 : std::strtol(value, nullptr, 10);
}

Fault wanted_fault() {
  const char* how = std::getenv("ZAN_FAULT");
  if (how == nullptr) return Fault::none;
  if (std::strcmp(how, "short") == 0) return Fault::short_write;
  if (std::strcmp(how, "kill") == 0) return Fault::kill;
  if (std::strcmp(how, "full") == 0) return Fault::full;
  return std::strcmp(how, "kill-after") == 0 ? Fault::kill_after : Fault::error;
}

struct Count {
  long lines = 0; // of standard input
  long calls = 0;
  bool open = number("ZAN_FAULT_LINE") == 0;
};

Count& count() {
  static Count instance;
  return instance;
}

void log(const char* name, const char* what) {
  const char* path = std::getenv("ZAN_FAULT_LOG");
  if (path == nullptr) return;
  char line[512];
  const int size = std::snprintf(line, sizeof line, "%s %s\n", name, what);
  const long file = ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND, 0600);
  ::syscall(SYS_write, file, line, static_cast<std::size_t>(size));
  ::syscall(SYS_close, file);
}

bool takes_room(const char* name) { return std::strstr("write writev fallocate", name) != nullptr; }

// Counts a call; what is to happen to it. errno is the wanted error then.
Fault next_fault(const char* name, const char* what) {
  if (!count().open) return Fault::none;
  log(name, what);
  const long after = ++count().calls - number("ZAN_FAULT_CALL");
  const Fault fault = wanted_fault();
  if (fault == Fault::full) {
    if (after < 0 || !takes_room(name)) return Fault::none;
    errno = ENOSPC;
    return Fault::error;
  }
  if (after != 0) return Fault::none;
  if (fault == Fault::kill) std::raise(SIGKILL);
  if (fault == Fault::error) errno = static_cast<int>(number("ZAN_FAULT"));
  return fault;
}

Fault next_fault(const char* name, int descriptor) {
  if (descriptor <= STDERR_FILENO) return Fault::none;
  char text[16];
  std::snprintf(text, sizeof text, "%d", descriptor);
  return next_fault(name, text);
}

template <typename Result, typename... Arguments> Result pass_on(const char* name, Arguments... arguments) {
  return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

template <typename Result, typename What, typename... Arguments>
Result call(const char* name, What what, Arguments... arguments) {
  const Fault fault = next_fault(name, what);
  if (fault == Fault::error) return static_cast<Result>(-1);
  const Result result = pass_on<Result>(name, arguments...);
  if (fault == Fault::kill_after) std::raise(SIGKILL);
  return result;
}

mode_t mode_argument(int flags, std::va_list arguments) {
  return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

bool memory_runs_out() {
  static long allocations = 0;
  const char* from = std::getenv("ZAN_FAULT_MEMORY");
  if (from == nullptr) return false;
  char* end = nullptr;
  const long wanted = std::strtol(from, &end, 10);
  ++allocations;
  const bool fails = *end == '+' ? allocations >= wanted : allocations == wanted;
  if (fails) {
    log("memory", from);
    errno = ENOMEM;
  }
  return fails;
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = mode_argument(flags, arguments);
  va_end(arguments);
  return call<int>("open", path, path, flags, mode);
}

int openat(int directory, const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = mode_argument(flags, arguments);
  va_end(arguments);
  return call<int>("openat", path, directory, path, flags, mode);
}

int mkstemp(char* path) {
  const Fault fault = next_fault("mkstemp", path);
  if (fault == Fault::error) return -1;
  const int file = pass_on<int>("mkstemp", path);
  log("made", path);
  if (fault == Fault::kill_after) std::raise(SIGKILL);
  return file;
}

int close(int file) { return call<int>("close", file, file); }

ssize_t read(int file, void* bytes, std::size_t size) {
  if (file != STDIN_FILENO) return call<ssize_t>("read", file, file, bytes, size);
  const long line = number("ZAN_FAULT_LINE");
  if (line > 0) count().open = false;
  const auto taken = pass_on<ssize_t>("read", file, bytes, size);
  for (ssize_t i = 0; i < taken; ++i) count().lines += static_cast<char*>(bytes)[i] == '\n' ? 1 : 0;
  if (taken > 0 && static_cast<char*>(bytes)[taken - 1] == '\n' && count().lines == line) count().open = true;
  return taken;
}

ssize_t pread(int file, void* bytes, std::size_t size, off_t offset) {
  return call<ssize_t>("pread", file, file, bytes, size, offset);
}

ssize_t write(int file, const void* bytes, std::size_t size) {
  const Fault fault = next_fault("write", file);
  if (fault == Fault::error) return -1;
  const auto taken = pass_on<ssize_t>("write", file, bytes, fault == Fault::none ? size : (size + 1) / 2);
  if (fault == Fault::kill_after) std::raise(SIGKILL);
  return taken;
}

ssize_t writev(int file, const struct iovec* parts, int size) {
  const Fault fault = next_fault("writev", file);
  if (fault == Fault::error) return -1;
  const auto taken = pass_on<ssize_t>("writev", file, parts, fault == Fault::none ? size : size - 1);
  if (fault == Fault::kill_after) std::raise(SIGKILL);
  return taken;
}

int fsync(int file) {
  const Fault fault = next_fault("fsync", file);
  if (fault == Fault::kill_after) std::raise(SIGKILL);
  return fault == Fault::error ? -1 : 0;
}

int ftruncate(int file, off_t length) noexcept { return call<int>("ftruncate", file, file, length); }
int fallocate(int file, int mode, off_t offset, off_t length) {
  return call<int>("fallocate", file, file, mode, offset, length);
}
off_t lseek(int file, off_t offset, int from) noexcept {
  return call<off_t>("lseek", file, file, offset, from);
}
int fchmod(int file, mode_t mode) noexcept { return call<int>("fchmod", file, file, mode); }
int fchown(int file, uid_t owner, gid_t group) noexcept {
  return call<int>("fchown", file, file, owner, group);
}

int fstat(int file, struct stat* status) noexcept { return call<int>("fstat", file, file, status); }
int stat(const char* path, struct stat* status) noexcept { return call<int>("stat", path, path, status); }
int lstat(const char* path, struct stat* status) noexcept { return call<int>("lstat", path, path, status); }
int fstatat(int directory, const char* path, struct stat* status, int flags) noexcept {
  return call<int>("fstatat", path, directory, path, status, flags);
}
ssize_t readlinkat(int directory, const char* path, char* target, std::size_t size) noexcept {
  return call<ssize_t>("readlinkat", path, directory, path, target, size);
}

int renameat(int from, const char* old_path, int to, const char* new_path) noexcept {
  return call<int>("renameat", old_path, from, old_path, to, new_path);
}
int renameat2(int from, const char* old_path, int to, const char* new_path, unsigned flags) noexcept {
  return call<int>("renameat2", old_path, from, old_path, to, new_path, flags);
}
int linkat(int from, const char* old_path, int to, const char* new_path, int flags) noexcept {
  return call<int>("linkat", old_path, from, old_path, to, new_path, flags);
}
int unlink(const char* path) noexcept { return call<int>("unlink", path, path); }
int unlinkat(int directory, const char* path, int flags) noexcept {
  return call<int>("unlinkat", path, directory, path, flags);
}

ssize_t flistxattr(int file, char* list, std::size_t size) noexcept {
  return call<ssize_t>("flistxattr", file, file, list, size);
}
ssize_t fgetxattr(int file, const char* name, void* value, std::size_t size) noexcept {
  return call<ssize_t>("fgetxattr", file, file, name, value, size);
}
int fsetxattr(int file, const char* name, const void* value, std::size_t size, int flags) noexcept {
  return call<int>("fsetxattr", file, file, name, value, size, flags);
}
int fremovexattr(int file, const char* name) noexcept { return call<int>("fremovexattr", file, file, name); }

int system(const char* command) { return call<int>("system", "command", command); }

void* malloc(std::size_t size) noexcept { return memory_runs_out() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t size, std::size_t each) noexcept {
  return memory_runs_out() ? nullptr : __libc_calloc(size, each);
}
void* realloc(void* memory, std::size_t size) noexcept {
  return memory_runs_out() ? nullptr : __libc_realloc(memory, size);
}
void* mmap(void* address, std::size_t size, int protection, int flags, int file, off_t offset) noexcept {
  if (memory_runs_out()) return MAP_FAILED;
  return pass_on<void*>("mmap", address, size, protection, flags, file, offset);
}

} // extern "C"
