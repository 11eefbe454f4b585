#include "support/system_call_faults.h"

#include <sqlite3.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace {

int failure = 0;
bool syncs_fail = false;
bool syncs_are_skipped = false;
std::atomic<int> flush_count{0};

template <class Result>
Result fail() {
  errno = failure;
  return static_cast<Result>(-1);
}

ssize_t fail_read_or_write(int, const void*, size_t, off_t) {
  return fail<ssize_t>();
}
int fail_truncate(int, off_t) {
  return fail<int>();
}
int fail_open(const char*, int, int) {
  return fail<int>();
}
void* fail_map(void*, size_t, int, int, int, off_t) {
  errno = failure;
  return reinterpret_cast<void*>(-1);
}

int calls_to_live = 0;  // 0: for ever
bool last_is_torn = false;

bool is_due() {
  return calls_to_live > 0 && --calls_to_live == 0;
}

[[noreturn]] void die() {
  kill(getpid(), SIGKILL);
  for (;;) pause();
}

ssize_t write_or_die(int descriptor, const void* data, size_t size, off_t offset) {
  if (!is_due()) return pwrite(descriptor, data, size, offset);
  if (last_is_torn && pwrite(descriptor, data, size / 2, offset) < 0) abort();
  die();
}
int truncate_or_die(int descriptor, off_t size) {
  return is_due() ? die(), -1 : ftruncate(descriptor, size);
}
int unlink_or_die(const char* path) {
  return is_due() ? die(), -1 : unlink(path);
}

template <class Function>
sqlite3_syscall_ptr engine_call(Function* function) {
  return reinterpret_cast<sqlite3_syscall_ptr>(function);
}

struct Replacement {
  const char* call;
  sqlite3_syscall_ptr function;
};

const Replacement kReplacements[] = {
    {"pwrite64", engine_call(fail_read_or_write)},
    {"pread64", engine_call(fail_read_or_write)},
    {"ftruncate", engine_call(fail_truncate)},
    {"open", engine_call(fail_open)},
    {"mmap", engine_call(fail_map)},
};

void replace(const char* call, sqlite3_syscall_ptr function) {
  sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
  if (files->xSetSystemCall(files, call, function) != SQLITE_OK)
    throw std::runtime_error(std::string("the engine makes no such call: ") + call);
}

sqlite3_syscall_ptr replacement_of(const char* call) {
  for (const Replacement& each : kReplacements)
    if (std::strcmp(each.call, call) == 0) return each.function;
  throw std::runtime_error(std::string("no replacement for ") + call);
}

}  // namespace

// The engine offers no replacement of this one: the test program's own takes the place of the C library's.
extern "C" __attribute__((visibility("default"))) int fdatasync(int descriptor) {
  ++flush_count;
  if (syncs_fail) return fail<int>();
  if (is_due()) die();
  if (syncs_are_skipped) return 0;
  return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

FailingCall::FailingCall(const char* call, int error) : call_(call) {
  failure = error;
  syncs_fail = std::strcmp(call, "fdatasync") == 0;
  if (!syncs_fail) replace(call, replacement_of(call));
}

FailingCall::~FailingCall() {
  if (!syncs_fail) replace(call_, nullptr);
  syncs_fail = false;
}

int flushes() {
  return flush_count;
}

void skip_syncs() {
  syncs_are_skipped = true;
}

void die_at_system_call(int due, bool torn) {
  calls_to_live = due;
  last_is_torn = torn;
  replace("pwrite64", engine_call(write_or_die));
  replace("ftruncate", engine_call(truncate_or_die));
  replace("unlink", engine_call(unlink_or_die));
}
