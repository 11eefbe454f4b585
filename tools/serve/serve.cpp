#include "tools/serve/serve.h"

#include <sys/stat.h>
#include <syslog.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>

#include "documents/snapshot.h"
#include "service/accounts/system_accounts.h"
#include "service/http/server.h"
#include "service/inventory/current.h"
#include "service/service.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using service::Address;
using service::Certificate;
using service::Server;
using service::ServiceError;
using service::Socket;

// The journal takes the urgency of a line from its beginning.
bool is_read_by_journal() {
  const char* const stream = std::getenv("JOURNAL_STREAM");
  struct stat status {};
  if (stream == nullptr || fstat(STDERR_FILENO, &status) != 0) return false;
  return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) == stream;
}

service::Log make_log() {
  return [marks = is_read_by_journal()](int priority, const std::string& line) {
    marks ? tell_journal(priority, line) : complain(line);
  };
}

class BlockedSignals {
 public:
  BlockedSignals() {
    sigemptyset(&set_);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&set_, signal);
    pthread_sigmask(SIG_BLOCK, &set_, nullptr);
  }

  // The next one, or 0 after that time.
  int wait(std::chrono::milliseconds longest) const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(longest - seconds);
    const timespec time{static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
    return std::max(0, sigtimedwait(&set_, nullptr, &time));
  }

 private:
  sigset_t set_{};
};

// Half of what the service manager waits for a sign of life.
std::optional<std::chrono::milliseconds> watchdog_pause() {
  uint64_t microseconds = 0;
  if (sd_watchdog_enabled(0, &microseconds) <= 0) return {};
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(microseconds)) / 2;
}

// What must not be asked for.
void require_safety(const Address& address, const ServeOptions& options) {
  if (address.is_loopback()) return;
  if (options.anonymous_reads)
    throw WrongInput("--anonymous-reads is for addresses of this machine alone, and not for " +
                     address.text());
  if (options.certificate.empty())
    throw WrongInput("other machines reach " + address.text() +
                     ": --tls-certificate and --tls-key are needed");
}

Socket open_socket(const ServeOptions& options) {
  const int count = sd_listen_fds(1);
  if (count > 1)
    throw WrongInput("the service manager passed on " + std::to_string(count) + " sockets: one is served");
  if (count == 1) {
    Socket socket = service::listening(SD_LISTEN_FDS_START);
    require_safety(socket.address(), options);
    return socket;
  }
  const auto address = service::parse_address(options.listen);
  if (!address) throw WrongInput("--listen " + options.listen + " is no ADDRESS:PORT");
  require_safety(*address, options);
  return service::listen_at(*address);
}

// A machine whose inventory is collected later is served all the same: until then requests are told so.
void try_to_open_inventory(const service::Log& log) {
  try {
    open_inventory(Opening::kReading);
  } catch (const Failure& failure) {
    log(LOG_WARNING, failure.what());
  }
}

void reload(Certificate* certificate, const service::Log& log) {
  if (certificate == nullptr) return;
  try {
    certificate->reload();
    log(LOG_INFO, "the certificate was read again");
  } catch (const ServiceError& error) {
    log(LOG_ERR, std::string("the certificate stays as it was: ") + error.what());
  }
}

void wait_for_end(const BlockedSignals& signals, const Server& server, Certificate* certificate,
                  const service::Log& log) {
  const auto pause = watchdog_pause();
  while (true) {
    const int signal = signals.wait(pause.value_or(std::chrono::hours(24)));
    if (signal == SIGHUP) reload(certificate, log);
    if (signal == SIGINT || signal == SIGTERM) return;
    if (pause && server.is_alive()) sd_notify(0, "WATCHDOG=1");
  }
}

void serve_until_interrupted(const ServeOptions& options) {
  const BlockedSignals signals;
  Socket socket = open_socket(options);
  const Address address = socket.address();
  std::unique_ptr<Certificate> certificate;
  if (!options.certificate.empty())
    certificate = std::make_unique<Certificate>(options.certificate, options.key);
  const auto log = make_log();
  const bool is_snapshot = documents::is_snapshot_file(inventory_location());
  try_to_open_inventory(log);
  service::Current current(options.names);
  service::SystemAccounts accounts({}, log);
  service::Service service(current, accounts,
                           {.anonymous_reads = options.anonymous_reads, .is_read_only = is_snapshot}, log);
  const Server server(
      service, std::move(socket),
      {.certificate = certificate.get(),
       .is_slow = [&](const service::Request& request) { return service.is_slow(request); },
       .observe = [&](const service::Request& request, int status,
                      std::chrono::nanoseconds time) { service.observe(request, status, time); }});
  service.watch_connections([&] { return server.connections(); });
  write_output((certificate != nullptr ? "https://" : "http://") + address.text() + "/\n");
  sd_notify(0, "READY=1");
  wait_for_end(signals, server, certificate.get(), log);
  sd_notify(0, "STOPPING=1");
}

}  // namespace

void serve(const ServeOptions& options) {
  if (options.certificate.empty() != options.key.empty())
    throw WrongInput("--tls-certificate and --tls-key are given together");
  try {
    serve_until_interrupted(options);
  } catch (const ServiceError& error) {
    throw Failure(error.what());
  }
}

}  // namespace zymdb::tool
