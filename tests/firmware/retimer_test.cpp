// Retimer updates: the requests that a service at the real socket receives, what becomes of its answers and
// of every failure, and the progress file. Neither a call nor a failure leaves a descriptor open.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "firmware/system_calls.h"
#include "support/named_pipe.h"
#include "support/system_log.h"
#include "support/turn.h"
#include "zymdb_firmware.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kSocketPath[] = "/tmp/rtcfgproxy.sock";
constexpr char kProgressPath[] = "/tmp/.rt_upd_state";

// The service, running beside the test.
class Service {
 public:
  explicit Service(const std::string& options = "")
      : output_(popen((RETIMER_SERVICE " " + options).c_str(), "re")) {
    EXPECT_EQ(line(), "ready");
  }
  ~Service() {
    while (!line().empty()) continue;
    EXPECT_EQ(pclose(output_), 0);
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  std::string line() {
    char text[512] = "";
    if (std::fgets(text, sizeof text, output_) == nullptr) return "";
    text[std::strcspn(text, "\n")] = '\0';
    return text;
  }

 private:
  FILE* output_;
};

class Retimer : public testing::Test {
 protected:
  Retimer() {
    system_log().clear();
    system_calls() = {};
    std::filesystem::remove(kSocketPath);
    for (size_t i = 0; i < sizeof request_.Data; ++i) request_.Data[i] = static_cast<uint8_t>(255 - i);
  }
  ~Retimer() override { std::filesystem::remove(kSocketPath); }

  int32_t update() {
    const auto before = open_descriptors();
    const int32_t result = retimer_update_fw(&request_);
    EXPECT_EQ(open_descriptors(), before);
    return result;
  }
  static int64_t open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }
  static void expect_failure_logged(const char* code) {
    EXPECT_THAT(system_log(), ElementsAre(failure_line(code)));
  }
  static std::string failure_line(const char* code) {
    return "14: retimer_update_fw, retimer_hal_proxy fails, rc = " + std::string(code) + "\n\n";
  }

  _ZYMDB_Retimer_Update_Req request_{{}, 0x11223344, 0xA5B6C7D8, 0x61, 0x62, 0x63};

 private:
  Turn turn_{"/tmp/zymdb-test-retimer.lock"};
};

TEST_F(Retimer, TheServiceReceivesTheRequest) {
  Service service;
  EXPECT_EQ(update(), 0);
  std::string data;
  for (int byte = 255; byte > 127; --byte) {
    char hex[3];
    std::snprintf(hex, sizeof hex, "%02x", byte);
    data += hex;
  }
  EXPECT_EQ(service.line(), "8c00" + std::string(34, '0') + data + "44332211" + "d8c7b6a5" + "616263" + "00");
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(Retimer, TheResultIsTheServicesWhateverItIs) {
  for (const int32_t result : {0, 1, -1, -6, 0x12345678, INT32_MAX, INT32_MIN}) {
    Service service("--result " + std::to_string(result));
    EXPECT_EQ(update(), result);
  }
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(Retimer, TheReplyIsAwaitedForAnHourAndThenReadWithinFiveSecondsAPiece) {
  Service service("--body 1");
  EXPECT_EQ(update(), 0);
  EXPECT_THAT(system_calls().waits, ElementsAre(3600));
  EXPECT_THAT(system_calls().receive_timeouts, ElementsAre(5));
}

TEST_F(Retimer, AReplyWithoutABodyIsAnsweredAtOnce) {
  Service service("--result 7 --keep-open");
  EXPECT_EQ(update(), 7);
}

TEST_F(Retimer, BodiesOfAnyLengthAreConsumed) {
  for (const int length : {1, 511, 512, 513, 1024, 5000, 65535}) {
    Service service("--result 7 --body " + std::to_string(length));
    EXPECT_EQ(update(), 7) << length;
  }
}

TEST_F(Retimer, ABodyMayArriveInPieces) {
  for (const char* pieces : {"19,1,1,1,2,3,5,700", "19,100,1,200", "20,7,90", "300", "519,512"}) {
    Service service("--result 7 --body 700 --pieces " + std::string(pieces));
    EXPECT_EQ(update(), 7) << pieces;
  }
}

TEST_F(Retimer, AHeaderMustArriveInOnePiece) {
  for (const char* pieces : {"1", "18,1", "10"}) {
    system_log().clear();
    Service service("--pieces " + std::string(pieces));
    EXPECT_EQ(update(), -1) << pieces;
    expect_failure_logged("0xffffffff");
  }
}

TEST_F(Retimer, AReplyThatEndsEarlyIsNone) {
  for (const char* options : {"--send 0", "--send 1", "--send 18", "--body 1 --send 19",
                              "--body 600 --send 618", "--body 65535 --send 600"}) {
    system_log().clear();
    Service service(options);
    EXPECT_EQ(update(), -1) << options;
    expect_failure_logged("0xffffffff");
  }
}

TEST_F(Retimer, ABodyThatStopsArrivingIsGivenUp) {
  Service service("--body 600 --send 300 --keep-open");
  EXPECT_EQ(update(), -1);
  expect_failure_logged("0xffffffff");
}

TEST_F(Retimer, AServiceThatNeverAnswersIsGivenUpAfterTheHour) {
  system_calls().time_passes = true;
  Service service("--send 0 --keep-open");
  EXPECT_EQ(update(), -6);
  EXPECT_THAT(system_calls().waits, ElementsAre(3600));
  expect_failure_logged("0xfffffffa");
}

TEST_F(Retimer, AnInterruptedWaitGoesOnForTheTimeLeft) {
  system_calls().interrupted_waits = {3000, 17};
  Service service("--result 7");
  EXPECT_EQ(update(), 7);
  EXPECT_THAT(system_calls().waits, ElementsAre(3600, 3000, 17));
}

TEST_F(Retimer, AWaitThatFailsIsTold) {
  system_calls().wait_error = EBADF;
  Service service("--send 0 --keep-open");
  EXPECT_EQ(update(), -5);
  expect_failure_logged("0xfffffffb");
}

TEST_F(Retimer, ADescriptorBeyondThoseThatCanBeWaitedForIsAFailedWait) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit raised{limit.rlim_max, limit.rlim_max};
  ASSERT_GT(raised.rlim_cur, rlim_t{FD_SETSIZE} + 8);
  setrlimit(RLIMIT_NOFILE, &raised);
  Service service("--send 0 --keep-open");
  std::vector<int> taken;
  do taken.push_back(dup(0));
  while (taken.back() < FD_SETSIZE - 1);
  EXPECT_EQ(update(), -5);
  expect_failure_logged("0xfffffffb");
  EXPECT_EQ(service.line(), "") << "nothing was asked of the service";
  for (const int descriptor : taken) close(descriptor);
  setrlimit(RLIMIT_NOFILE, &limit);
}

TEST_F(Retimer, WithoutASocketTheServiceIsNotReached) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const int lowest_free = dup(0);
  close(lowest_free);
  const rlimit none_left{static_cast<rlim_t>(lowest_free), limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none_left);
  EXPECT_EQ(retimer_update_fw(&request_), -2);
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(dup(0), lowest_free);  // still the lowest
  close(lowest_free);
  expect_failure_logged("0xfffffffe");
}

TEST_F(Retimer, AServiceThatDoesNotRunIsNotReached) {
  EXPECT_EQ(update(), -3);
  EXPECT_THAT(system_log(),
              ElementsAre("14: retimer_hal_proxy, connect error, rc=-1(No such file or directory)\n\n",
                          failure_line("0xfffffffd")));
}

TEST_F(Retimer, AServiceThatRefusesIsNotReached) {
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, kSocketPath);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  close(listener);
  EXPECT_EQ(update(), -3);
  EXPECT_THAT(system_log(), ElementsAre("14: retimer_hal_proxy, connect error, rc=-1(Connection refused)\n\n",
                                        failure_line("0xfffffffd")));
}

TEST_F(Retimer, AServiceThatHangsUpAtOnceIsAFailedWriteAndNotTheEndOfTheProcess) {
  signal(SIGPIPE, SIG_DFL);
  system_calls().connects_to_quitter = true;
  Service service("--hang-up");
  EXPECT_EQ(update(), -4);
  EXPECT_THAT(system_log(),
              ElementsAre("14: retimer_hal_proxy, write error\n\n", failure_line("0xfffffffc")));
  EXPECT_EQ(signal(SIGPIPE, SIG_DFL), SIG_IGN);
}

TEST_F(Retimer, BrokenPipesStayIgnoredAfterwards) {
  signal(SIGPIPE, SIG_DFL);
  EXPECT_EQ(retimer_update_fw(nullptr), -1);
  EXPECT_EQ(signal(SIGPIPE, SIG_DFL), SIG_DFL);
  Service service;
  EXPECT_EQ(update(), 0);
  EXPECT_EQ(signal(SIGPIPE, SIG_DFL), SIG_IGN);
}

TEST_F(Retimer, ARequestIsWrittenWholeOrNotAtAll) {
  system_calls().write_takes = 158;
  Service service;
  EXPECT_EQ(update(), -4);
  EXPECT_EQ(service.line().size(), 2 * 158u);
  EXPECT_THAT(system_log(),
              ElementsAre("14: retimer_hal_proxy, write error\n\n", failure_line("0xfffffffc")));
}

TEST_F(Retimer, AnInterruptedWriteIsRepeated) {
  system_calls().interrupted_writes = 3;
  Service service("--result 7");
  EXPECT_EQ(update(), 7);
  EXPECT_EQ(service.line().size(), 2 * 159u);
}

TEST_F(Retimer, ARequestThatIsInterruptedForFiveSecondsIsNotWritten) {
  system_calls().interrupted_writes = 10;
  system_calls().seconds_per_interruption = 1;
  Service service;
  EXPECT_EQ(update(), -4);
  EXPECT_EQ(system_calls().interrupted_writes, 5);
  EXPECT_EQ(service.line(), "");
}

TEST_F(Retimer, AnInterruptedReadGoesOnForTheTimeLeftOfItsFiveSeconds) {
  system_calls().interrupted_reads = 2;
  system_calls().seconds_per_interruption = 2;
  Service service("--result 7 --body 1 --keep-open");
  EXPECT_EQ(update(), 7);
  // What is left is a little less than 3 seconds and 1; the next read has all of them again.
  EXPECT_THAT(system_calls().receive_timeouts, ElementsAre(5, 2, 0, 5));
}

TEST_F(Retimer, AnAnswerThatIsInterruptedForFiveSecondsIsGivenUp) {
  system_calls().interrupted_reads = 10;
  system_calls().seconds_per_interruption = 1;
  Service service("--result 7 --keep-open");
  EXPECT_EQ(update(), -1);
  EXPECT_EQ(system_calls().interrupted_reads, 5);
  expect_failure_logged("0xffffffff");
}

TEST_F(Retimer, SignalsDoNotDisturbTheUpdate) {
  Service service("--result 7 --body 300 --pieces 19,10");
  struct sigaction counting {};
  static volatile sig_atomic_t signals;
  signals = 0;
  counting.sa_handler = [](int) { signals = signals + 1; };
  sigaction(SIGALRM, &counting, nullptr);
  const itimerval often{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  const int32_t result = retimer_update_fw(&request_);
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  EXPECT_EQ(result, 7);
  EXPECT_GT(signals, 10);
}

TEST_F(Retimer, SeveralCallersHoldAConnectionEach) {
  Service service("--result 7 --body 600 --connections 4");
  const auto before = open_descriptors();
  std::vector<int32_t> results(4);
  std::vector<std::thread> callers;
  for (int32_t& result : results)
    callers.emplace_back([this, &result] { result = retimer_update_fw(&request_); });
  for (std::thread& caller : callers) caller.join();
  EXPECT_THAT(results, ElementsAre(7, 7, 7, 7));
  EXPECT_EQ(open_descriptors(), before);
}

TEST_F(Retimer, AMissingRequestIsRefusedWithoutALine) {
  EXPECT_EQ(retimer_update_fw(nullptr), -1);
  EXPECT_THAT(system_log(), IsEmpty());
}

class RetimerProgress : public Retimer {
 protected:
  RetimerProgress() { std::filesystem::remove(kProgressPath); }
  ~RetimerProgress() override { std::filesystem::remove(kProgressPath); }

  static void given_file(const std::string& bytes) {
    std::ofstream(kProgressPath, std::ios::binary) << bytes;
  }
  int32_t read(uint32_t slot) {
    const auto before = open_descriptors();
    const int32_t result = retimer_get_fw_update_progress(slot, &progress_);
    EXPECT_EQ(open_descriptors(), before);
    return result;
  }
  void expect_untouched() const {
    EXPECT_EQ(progress_.Stage, 1111u);
    EXPECT_EQ(progress_.Progress, 2222u);
  }
  static std::string line(const char* text) {
    return "14: retimer_get_fw_update_progress, " + std::string(text) + "\n\n";
  }

  _ZYMDB_Retimer_Progress progress_{1111, 2222};
};

TEST_F(RetimerProgress, IsThatOfTheSlotInTheFile) {
  given_file("\x03\x02\x64");
  EXPECT_EQ(read(3), 0);
  EXPECT_EQ(progress_.Stage, 2u);
  EXPECT_EQ(progress_.Progress, 100u);
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(RetimerProgress, BytesAreUnsignedAndWhatFollowsThemIsIgnored) {
  given_file("\xff\xfe\xfd and more");
  EXPECT_EQ(read(255), 0);
  EXPECT_EQ(progress_.Stage, 254u);
  EXPECT_EQ(progress_.Progress, 253u);
}

TEST_F(RetimerProgress, IsReadAfreshEachTime) {
  for (const char percent : {char{1}, char{50}, char{100}}) {
    given_file({3, 1, percent});
    EXPECT_EQ(read(3), 0);
    EXPECT_EQ(progress_.Progress, static_cast<uint32_t>(percent));
  }
}

TEST_F(RetimerProgress, OfAnotherSlotIsNone) {
  given_file("\x03\x02\x64");
  for (const uint32_t slot : {4u, 0u, 0x103u, 0xFFFFFF03u}) EXPECT_EQ(read(slot), -1);
  given_file("\xff\x02\x64");
  EXPECT_EQ(read(0xFFFFFFFF), -1);
  expect_untouched();
  EXPECT_THAT(system_log(), IsEmpty());
}

TEST_F(RetimerProgress, AFileThatEndsEarlyIsTold) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "read slot from retimer update progress file failed"},
      {"\x03", "read stage from retimer update progress file failed"},
      {"\x03\x02", "read progress from retimer update progress file failed"}};
  for (const auto& [bytes, text] : cases) {
    system_log().clear();
    given_file(bytes);
    EXPECT_EQ(read(3), -1);
    EXPECT_THAT(system_log(), ElementsAre(line(text)));
  }
  expect_untouched();
}

TEST_F(RetimerProgress, AFileThatCannotBeOpenedOrReadIsTold) {
  EXPECT_EQ(read(3), -1);
  std::filesystem::create_directory(kProgressPath);
  EXPECT_EQ(read(3), -1);
  EXPECT_THAT(system_log(), ElementsAre(line("open raid update progress file failed"),
                                        line("read slot from retimer update progress file failed")));
  expect_untouched();
}

TEST_F(RetimerProgress, ANamedPipeInItsPlaceIsNotWaitedFor) {
  const NamedPipe pipe(kProgressPath);
  EXPECT_EQ(pipe.answer_of([this] { return read(3); }), -1);
  EXPECT_THAT(system_log(), ElementsAre(line("read slot from retimer update progress file failed")));
  expect_untouched();
}

TEST_F(RetimerProgress, WithoutAnOutputIsRefusedWithoutALine) {
  given_file("\x03\x02\x64");
  EXPECT_EQ(retimer_get_fw_update_progress(3, nullptr), -1);
  EXPECT_THAT(system_log(), IsEmpty());
}

}  // namespace
