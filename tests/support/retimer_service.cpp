// The retimer service as tests need it: takes update requests at the service's socket, prints each in
// hexadecimal, and answers well or badly. Prints "ready" once it can be reached.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

namespace {

constexpr char kSocketPath[] = "/tmp/rtcfgproxy.sock";
constexpr size_t kRequestSize = 159;
constexpr size_t kHeaderSize = 19;
constexpr size_t kResultOffset = 7;

struct Behaviour {
  int32_t result = 0;
  uint16_t body = 0;
  std::vector<size_t> pieces;
  size_t send = SIZE_MAX;
  bool keep_open = false;
  bool hang_up = false;
};

[[noreturn]] void fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

int listen_at_socket() {
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, kSocketPath);
  unlink(kSocketPath);
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) fail("bind");
  if (listen(listener, 16) != 0) fail("listen");
  return listener;
}

void print_request(int connection) {
  uint8_t request[kRequestSize];
  const ssize_t count = recv(connection, request, sizeof request, MSG_WAITALL);
  for (ssize_t i = 0; i < count; ++i) std::printf("%02x", request[i]);
  std::printf("\n");
  std::fflush(stdout);
}

// What nobody interprets is neither zero nor a text.
std::vector<uint8_t> reply_of(const Behaviour& behaviour) {
  std::vector<uint8_t> reply(kHeaderSize + behaviour.body, 0xA5);
  std::memcpy(reply.data(), &behaviour.body, sizeof behaviour.body);
  std::memcpy(reply.data() + kResultOffset, &behaviour.result, sizeof behaviour.result);
  reply.resize(std::min(reply.size(), behaviour.send));
  return reply;
}

// In pieces of the sizes listed, of which the last one stands for all that follow.
void send_reply(int connection, const Behaviour& behaviour) {
  const std::vector<uint8_t> reply = reply_of(behaviour);
  size_t piece = 0;
  for (size_t sent = 0; sent < reply.size();) {
    if (sent > 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    size_t size = reply.size() - sent;
    if (!behaviour.pieces.empty())
      size = std::min(size, behaviour.pieces[std::min(piece++, behaviour.pieces.size() - 1)]);
    if (send(connection, reply.data() + sent, size, MSG_NOSIGNAL) < 0) return;
    sent += size;
  }
}

void serve(int connection, const Behaviour& behaviour) {
  if (behaviour.hang_up) return;
  print_request(connection);
  send_reply(connection, behaviour);
  char rest;
  if (behaviour.keep_open) (void)!read(connection, &rest, 1);  // until the client has gone
}

}  // namespace

int main(int argc, char** argv) {
  Behaviour behaviour;
  int connections = 1;
  CLI::App app("Answers retimer update requests");
  app.add_option("--result", behaviour.result, "result in the reply")->capture_default_str();
  app.add_option("--body", behaviour.body, "length of the body that follows the header")
      ->capture_default_str();
  app.add_option("--pieces", behaviour.pieces, "sizes in which the reply is sent; the last one repeats")
      ->delimiter(',')
      ->check(CLI::PositiveNumber);
  app.add_option("--send", behaviour.send, "send no more than so many bytes of the reply");
  app.add_flag("--keep-open", behaviour.keep_open, "let the client hang up first");
  app.add_flag("--hang-up", behaviour.hang_up, "hang up without reading");
  app.add_option("--connections", connections, "serve so many clients")->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  alarm(60);  // whatever becomes of the test that waits for it
  const int listener = listen_at_socket();
  std::puts("ready");
  std::fflush(stdout);
  while (connections-- > 0) {
    const int connection = accept(listener, nullptr, nullptr);
    if (connection < 0) fail("accept");
    serve(connection, behaviour);
    close(connection);
  }
  unlink(kSocketPath);
  return 0;
}
