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

// From here on the process counts the calls that change files ("pwrite64", "ftruncate", "unlink",
// "fdatasync"), and kills itself in the place of the one that is due (1 is the next one). Where it is a write
// that shall be `torn`, half of it is done before. For a process of its own: there is no way back.
void die_at_system_call(int due, bool torn);

// How often the process has flushed a file so far.
int flushes();

// From here on nothing is flushed, by this process and its children.
void skip_syncs();

#endif
