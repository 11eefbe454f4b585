// The page's handler behind the least of a server, for browsers of tests:
//
//   page_server [--login] [--file PATH=FILE]…
//
// answers on a free port of this machine, which it prints, until its input ends. With --login only who logged
// in as "reader" with the password "correct horse" may read. A line of its input is a command: "refuse" and
// "allow" decide whether sessions hold. --file answers a path with a document of the tests instead of the
// page's.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <thread>

#include "common/client_extensions.h"
#include "documents/inventory_types.h"
#include "records/pci.h"
#include "service/page/page.h"

namespace zymdb::service {
namespace {

constexpr char kSessions[] = "/redfish/v1/SessionService/Sessions";
constexpr char kToken[] = "0123456789abcdef";
constexpr char kCredentials[] = R"({"UserName":"reader","Password":"correct horse"})";

std::atomic<bool> needs_login{false};
std::map<std::string, std::string> own_files;

std::string lower(std::string text) {
  for (char& each : text) each = static_cast<char>(tolower(each));
  return text;
}

// False where the connection ended first.
bool read_request(int from, Request& request) {
  std::string text;
  size_t head = std::string::npos;
  while ((head = text.find("\r\n\r\n")) == std::string::npos) {
    char piece[4096];
    const ssize_t size = recv(from, piece, sizeof piece, 0);
    if (size <= 0) return false;
    text.append(piece, static_cast<size_t>(size));
  }
  std::istringstream lines(text.substr(0, head));
  std::string method, line;
  lines >> method >> request.path;
  request.path = request.path.substr(0, request.path.find('?'));
  request.method = method == "GET" ? Method::kGet : method == "POST" ? Method::kPost : Method::kOther;
  std::getline(lines, line);
  size_t length = 0;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const size_t colon = line.find(": ");
    if (colon == std::string::npos) continue;
    request.headers.emplace_back(line.substr(0, colon), line.substr(colon + 2));
    if (lower(line.substr(0, colon)) == "content-length") length = std::stoul(line.substr(colon + 2));
  }
  request.body = text.substr(head + 4);
  while (request.body.size() < length) {
    char piece[4096];
    const ssize_t size = recv(from, piece, sizeof piece, 0);
    if (size <= 0) return false;
    request.body.append(piece, static_cast<size_t>(size));
  }
  return true;
}

bool send_all(int to, const std::string& content) {
  for (size_t done = 0; done < content.size();) {
    const ssize_t sent = send(to, content.data() + done, content.size() - done, MSG_NOSIGNAL);
    if (sent <= 0) return false;
    done += static_cast<size_t>(sent);
  }
  return true;
}

bool is_open(int connection) {
  char piece;
  return recv(connection, &piece, 1, MSG_DONTWAIT | MSG_PEEK) != 0;
}

Response logged_in(const Request& request) {
  if (request.body != kCredentials) return Response::of(401, "application/json", "{}");
  Response response = Response::of(201, "application/json", "{}");
  response.headers.emplace_back("X-Auth-Token", kToken);
  return response;
}

Response answer(Page& page, Request& request) {
  if (request.method == Method::kPost && request.path == kSessions) return logged_in(request);
  if (!needs_login || request.header("X-Auth-Token") == kToken)
    request.caller = {"reader", Role::kReadOnly, ""};
  Response response = page.answer(request);
  const auto own = own_files.find(request.path);
  if (own == own_files.end() || response.status != 200) return response;
  std::ifstream file(own->second, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  response.body = std::make_shared<const std::string>(content.str());
  response.gzip = nullptr;
  return response;
}

void serve(Page& page, int connection) {
  Request request;
  if (read_request(connection, request)) {
    const Response response = answer(page, request);
    std::string head = "HTTP/1.1 " + std::to_string(response.status) + " -\r\nConnection: close\r\n";
    for (const auto& [name, value] : response.headers) head += name + ": " + value + "\r\n";
    if (response.stream != nullptr) {
      bool goes_on = send_all(connection, head + "\r\n");
      while (goes_on && !response.stream->is_over() && is_open(connection)) {
        goes_on = send_all(connection, response.stream->take());
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
    } else {
      const auto accepted = request.header("Accept-Encoding");
      const bool is_gzip =
          response.gzip != nullptr && accepted && accepted->find("gzip") != std::string_view::npos;
      const auto body = is_gzip ? response.gzip : response.body;
      if (is_gzip) head += "Content-Encoding: gzip\r\n";
      if (response.status != 304)
        head += "Content-Length: " + std::to_string(body == nullptr ? 0 : body->size()) + "\r\n";
      send_all(connection, head + "\r\n" + (body == nullptr ? "" : *body));
    }
  }
  close(connection);
}

int listen_anywhere(uint16_t& port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const plain = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, plain, size) != 0 || listen(listener, 64) != 0 ||
      getsockname(listener, plain, &size) != 0)
    return -1;
  port = ntohs(address.sin_port);
  return listener;
}

int run(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--login") needs_login = true;
    if (argument == "--file" && i + 1 < argc) {
      const std::string file = argv[++i];
      own_files[file.substr(0, file.find('='))] = file.substr(file.find('=') + 1);
    }
  }
  allow_creation(false);
  Current current(documents::inventory_types(records::kPciIdsFile));
  Page page(current);
  uint16_t port = 0;
  const int listener = listen_anywhere(port);
  if (listener < 0) return 1;
  std::thread([&] {
    for (;;) {
      const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
      if (connection >= 0) std::thread(serve, std::ref(page), connection).detach();
    }
  }).detach();
  std::cout << port << std::endl;
  for (std::string line; std::getline(std::cin, line);) {
    if (line == "refuse") needs_login = true;
    if (line == "allow") needs_login = false;
  }
  // The threads that answer are not waited for.
  _exit(0);
}

}  // namespace
}  // namespace zymdb::service

int main(int argc, char** argv) {
  return zymdb::service::run(argc, argv);
}
