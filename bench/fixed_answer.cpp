// A server with one resource that never changes, for the comparison with a server of files: fixed_answer FILE
#include <csignal>
#include <cstdio>
#include <string>

#include "common/source_file.h"
#include "service/http/entity_tag.h"
#include "service/http/server.h"

namespace {

using namespace zymdb::service;

constexpr char kTag[] = "\"fixed\"";

class FixedAnswer : public Handler {
 public:
  explicit FixedAnswer(std::string content)
      : response_(Response::of(200, "application/json", std::move(content))) {
    response_.headers.emplace_back("ETag", kTag);
  }

  Response answer(const Request& request) override {
    const auto known = request.header("If-None-Match");
    if (known && names_tag(*known, kTag)) return {.status = 304, .headers = response_.headers};
    return response_;
  }

 private:
  Response response_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  FixedAnswer handler(zymdb::read_source(argv[1]));
  Socket socket = listen_at(*parse_address("127.0.0.1:0"));
  const std::string address = socket.address().text();
  const Server server(handler, std::move(socket), {});
  std::printf("http://%s/\n", address.c_str());
  std::fflush(stdout);
  int signal = 0;
  sigwait(&ends, &signal);
}
