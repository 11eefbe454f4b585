// One handle, many threads.
#include <atomic>
#include <thread>

#include "platform/client_fixture.h"

namespace {

class ThreadsTest : public ClientTest {
 protected:
  static constexpr int kThreads = 8;

  template <class Body>
  static void in_threads(Body body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) threads.emplace_back([=] { body(i); });
    for (std::thread& thread : threads) thread.join();
  }
};

TEST_F(ThreadsTest, WritersLoseNoRowAndReadersSeeNoError) {
  constexpr int kRounds = 30;
  std::atomic<int> errors{0};
  in_threads([&](int thread) {
    const Set values(zym_db_get_content_values(get_dmdb_handle()));
    for (int round = 0; round < kRounds; ++round) {
      zym_db_content_put_int(values.get(), "PCIKey", thread);
      zym_db_content_put_int(values.get(), "PCIFuncKey", round);
      if (zym_db_insert(get_dmdb_handle(), "PCIAdapter", values.get(), 0, nullptr) != 0) ++errors;
      zym_db_result_t* rows = nullptr;
      const std::string where = "PCIKey=" + std::to_string(thread);
      if (zym_db_query(get_dmdb_handle(), "PCIAdapter", nullptr, 0, where.c_str(), nullptr, 0, 0, &rows) !=
          0) {
        ++errors;
        continue;
      }
      // A thread's own rows are all there.
      if (zym_db_result_row_count(rows) != static_cast<unsigned>(round) + 1) ++errors;
      zym_db_free_result(rows);
    }
  });
  EXPECT_EQ(errors, 0);
  EXPECT_EQ(count("PCIAdapter", "1"), kThreads * kRounds);
}

TEST_F(ThreadsTest, ReadersSeeATransactionWholeOrNotAtAll) {
  given("PCIs", {{"BusNo", 0}});
  given("PCIs", {{"BusNo", 0}});
  std::atomic<bool> done{false};
  std::atomic<int> torn{0};
  std::thread reader([&] {
    while (!done) {
      zym_db_result_t* rows = nullptr;
      const char* const column = "count(DISTINCT BusNo)";
      unsigned int different = 0;
      if (zym_db_query(get_dmdb_handle(), "PCIs", &column, 1, nullptr, nullptr, 0, 0, &rows) != 0) ++torn;
      zym_db_result_step(rows);
      zym_db_result_column_uint(rows, 0, &different);
      zym_db_free_result(rows);
      if (different != 1) ++torn;
    }
  });
  const Set values(zym_db_get_content_values(handle()));
  for (int round = 1; round <= 50; ++round) {
    zym_db_content_put_int(values.get(), "BusNo", round);
    EXPECT_EQ(zym_db_begin(handle()), 0);
    EXPECT_EQ(zym_db_update(handle(), "PCIs", values.get(), "_id=1", nullptr, 0, nullptr), 0);
    EXPECT_EQ(zym_db_update(handle(), "PCIs", values.get(), "_id=2", nullptr, 0, nullptr), 0);
    EXPECT_EQ(zym_db_commit(handle()), 0);
  }
  done = true;
  reader.join();
  EXPECT_EQ(torn, 0);
}

TEST_F(ThreadsTest, AReaderDoesNotWaitForAnOpenTransaction) {
  given("PCIs", {{"FunKey", 1}});
  ASSERT_EQ(zym_db_begin(handle()), 0);
  given("PCIs", {{"FunKey", 2}});
  int64_t seen = -1;
  std::thread([&] { seen = count("PCIs", "1"); }).join();
  EXPECT_EQ(seen, 1);
  ASSERT_EQ(zym_db_commit(handle()), 0);
}

TEST_F(ThreadsTest, ClosingAndReopeningUnderLoadHurtsNobody) {
  std::atomic<bool> done{false};
  std::thread closer([&] {
    while (!done) {
      if (_zym_db_handle_t* const open = get_dmdb_handle()) zym_db_close(open);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  });
  std::atomic<int> unexpected{0};
  in_threads([&](int) {
    for (int round = 0; round < 100; ++round) {
      _zym_db_handle_t* const open = get_dmdb_handle();
      zym_db_result_t* rows = nullptr;
      const int status = zym_db_query(open, "PCIs", nullptr, 0, "FunKey=1", nullptr, 0, 0, &rows);
      if (status != 0 && status != ZYM_DB_STATUS_NO_DB) ++unexpected;
      if (status == 0) zym_db_free_result(rows);
    }
  });
  done = true;
  closer.join();
  EXPECT_EQ(unexpected, 0);
}

}  // namespace
