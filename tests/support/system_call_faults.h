// Makes the database engine's system calls fail, as a broken device does.
#ifndef ZYMDB_TESTS_SUPPORT_SYSTEM_CALL_FAULTS_H
#define ZYMDB_TESTS_SUPPORT_SYSTEM_CALL_FAULTS_H

// As long as it lives, this call fails with this error number. The calls: "pwrite64", "pread64", "ftruncate",
// "open", "mmap", and "fdatasync". One at a time.
class FailingCall {
 public:
  FailingCall(const char* call, int error);
  ~FailingCall();
  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;

 private:
  const char* call_;
};

#endif
