// Does with the client what its standard input says, a line each, and answers each with a line:
//
//   STATUS MILLISECONDS WORDS
//
// The words are what was read, or what the client says of a failure. "write" and "watch" go on until the next
// line comes and answer a line for each write or read.
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#include "common/client_objects.h"
#include "zymdb_platform.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPace{10};
constexpr int kMostTries = 50;
constexpr int kBusy = 40;
constexpr char kNotKnown[] = "is not known";

struct Answer {
  int status = 0;
  std::string words;

  bool may_be_written() const { return words.find(kNotKnown) != words.npos; }
};

Answer answer(int status, std::string words = {}) {
  return {status, status == 0 ? std::move(words) : zym_db_last_error(nullptr)};
}

Answer unopened() {
  int status = 0;
  std::string words = zym_db_last_error(&status);
  return {status, std::move(words)};
}

Answer run(int (*operation)(_zym_db_handle_t*)) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  return handle == nullptr ? unopened() : answer(operation(handle));
}

Answer add(int number) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return unopened();
  const zymdb::ValuesPtr values(zym_db_get_content_values(handle));
  zym_db_content_put_int(values.get(), "FunKey", number);
  return answer(zym_db_insert(handle, "PCIs", values.get(), 0, nullptr));
}

Answer try_pair(int number) {
  if (Answer begun = run(zym_db_begin); begun.status != 0) return begun;
  Answer added = add(number);
  if (added.status == 0) added = add(number + 1);
  if (added.status == 0) return run(zym_db_commit);
  run(zym_db_rollback);
  return added;
}

// As callers are to do it: the whole transaction anew, unless nobody knows whether it was written.
Answer add_pair(int number) {
  Answer made;
  for (int tried = 0; tried < kMostTries; ++tried) {
    made = try_pair(number);
    if (made.status == 0 || made.may_be_written()) break;
    std::this_thread::sleep_for(kPace);
  }
  return made;
}

Answer read(const char* column, const char* where) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return unopened();
  zym_db_result_t* raw = nullptr;
  const int status = zym_db_query(handle, "PCIs", &column, 1, where, nullptr, 0, 0, &raw);
  const zymdb::ResultPtr rows(raw);
  std::string words;
  while (rows != nullptr && zym_db_result_step(rows.get()) == ZYM_DB_STATUS_ROW) {
    int value = 0;
    zym_db_result_column_int(rows.get(), 0, &value);
    words.append(words.empty() ? "" : " ").append(std::to_string(value));
  }
  return answer(status, std::move(words));
}

Answer generation() {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return unopened();
  uint64_t number = 0;
  const int status = zym_db_generation(handle, &number);
  return answer(status, std::to_string(number));
}

bool is_told_to_end() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, 0) > 0;
}

template <class Operation>
void tell(Operation operation, const std::string& of = {}) {
  const auto began = Clock::now();
  const Answer made = operation();
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began).count();
  std::cout << of << made.status << ' ' << took << ' ' << made.words << std::endl;
}

// Numbers in turns alone and in pairs. A line begins with how many, and with the first.
void write_on(int number) {
  for (bool is_pair = false; !is_told_to_end(); is_pair = !is_pair) {
    const int count = is_pair ? 2 : 1;
    tell([&] { return is_pair ? add_pair(number) : add(number); },
         std::to_string(count) + ' ' + std::to_string(number) + ' ');
    number += count;
    std::this_thread::sleep_for(kPace);
  }
}

void watch() {
  while (!is_told_to_end()) {
    tell([] { return read("count(*)", nullptr); });
    std::this_thread::sleep_for(kPace);
  }
}

void obey(const std::string& command, int number) {
  if (command == "add") return tell([&] { return add(number); });
  if (command == "has")
    return tell([&] { return read("count(*)", ("FunKey=" + std::to_string(number)).c_str()); });
  if (command == "numbers") return tell([] { return read("FunKey", nullptr); });
  if (command == "ids") return tell([] { return read("_id", nullptr); });
  if (command == "generation") return tell(generation);
  if (command == "begin") return tell([] { return run(zym_db_begin); });
  if (command == "commit") return tell([] { return run(zym_db_commit); });
  if (command == "rollback") return tell([] { return run(zym_db_rollback); });
  if (command == "write") write_on(number);
  if (command == "watch") watch();
  std::cout << "end" << std::endl;
}

}  // namespace

// The input is not read ahead of: "write" and "watch" look whether more has come.
int main() {
  std::string line;
  for (char c = 0; read(STDIN_FILENO, &c, 1) == 1;) {
    if (c != '\n') {
      line += c;
      continue;
    }
    const size_t blank = line.find(' ');
    obey(line.substr(0, blank), blank == line.npos ? 0 : std::stoi(line.substr(blank)));
    line.clear();
  }
  return 0;
}
