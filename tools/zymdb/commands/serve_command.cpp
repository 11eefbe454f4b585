#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include "commands/commands.h"
#include "records/pci.h"
#include "show/functions.h"
#include "terminal/failure.h"

namespace zymdb::tool {
namespace {

constexpr char kDefaultAddress[] = "127.0.0.1:8000";

constexpr char kFooter[] =
    "Serves the inventory over HTTP until it is interrupted (Ctrl-C): a page for people at /, metrics for\n"
    "Prometheus at /metrics.\n"
    "Users log in as users of this system do (PAM, service \"zymdb\"); the groups zymdb-readonly,\n"
    "zymdb-operator and zymdb-administrator say who may do what.\n"
    "\n"
    "An address that other machines reach needs --tls-certificate and --tls-key; SIGHUP reads them again.\n"
    "A socket that systemd passes on takes the place of --listen.\n"
    "\n"
    "Examples:\n"
    "  zymdb serve\n"
    "  zymdb serve --anonymous-reads & curl http://localhost:8000/metrics\n"
    "  zymdb serve --listen '[::]:8443' --tls-certificate server.pem --tls-key server.key";

struct ServeOptions {
  std::string listen = kDefaultAddress;
  std::string certificate;
  std::string key;
  std::string names = records::kPciIdsFile;
  bool anonymous_reads = false;
};

// Where it lies to this one, wherever both were moved.
std::string path_of_service() {
  std::error_code error;
  const auto own = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) throw Failure("cannot tell where this program is: " + error.message());
  return (own.parent_path() / ZYMDB_TO_SERVICE).lexically_normal();
}

// The service takes this process over: who started it knows it by its number.
void become_service(const ServeOptions& options) {
  std::vector<std::string> words{"zymdb-serve", "--listen", options.listen, "--pci-ids", options.names};
  if (!options.certificate.empty()) words.insert(words.end(), {"--tls-certificate", options.certificate});
  if (!options.key.empty()) words.insert(words.end(), {"--tls-key", options.key});
  if (options.anonymous_reads) words.emplace_back("--anonymous-reads");
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const std::string path = path_of_service();
  execv(path.c_str(), arguments.data());
  throw Failure("cannot start " + path + ": " + std::strerror(errno));
}

}  // namespace

void add_serve(CommandTree& tree) {
  const auto options = std::make_shared<ServeOptions>();
  auto& command = *tree.app.add_subcommand("serve", "Serve the inventory over HTTP");
  command.footer(kFooter);
  command.add_option("--listen", options->listen, "Where, port 0 for a free one")
      ->type_name("ADDRESS:PORT")
      ->capture_default_str();
  command.add_option("--tls-certificate", options->certificate, "The certificate and those above it, in PEM")
      ->type_name(kFileType);
  command.add_option("--tls-key", options->key, "Its key, in PEM")->type_name(kFileType);
  command.add_flag("--anonymous-reads", options->anonymous_reads,
                   "Answer reads without a login, on an address of this machine alone");
  add_pci_ids_option(command, options->names);
  command.callback([options] { become_service(*options); });
}

}  // namespace zymdb::tool
