// zymdb-serve: the service alone, which `zymdb serve` becomes. A program of its own, because the libraries of
// the other commands would be resident as long as it runs, and its own would be opened by each of them.

#include <getopt.h>
#include <malloc.h>

#include "terminal/failure.h"
#include "terminal/program.h"
#include "tools/serve/serve.h"

namespace {

using namespace zymdb::tool;

// `zymdb serve` has read what somebody wrote, and hands on all of these.
constexpr option kOptions[] = {
    {"listen", required_argument, nullptr, 'l'},    {"tls-certificate", required_argument, nullptr, 'c'},
    {"tls-key", required_argument, nullptr, 'k'},   {"pci-ids", required_argument, nullptr, 'p'},
    {"anonymous-reads", no_argument, nullptr, 'a'}, {}};

ServeOptions read_options(int argc, char** argv) {
  ServeOptions options;
  opterr = 0;
  for (int found = 0; (found = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    if (found == 'l') options.listen = optarg;
    if (found == 'c') options.certificate = optarg;
    if (found == 'k') options.key = optarg;
    if (found == 'p') options.names = optarg;
    if (found == 'a') options.anonymous_reads = true;
    if (found == '?') throw WrongInput("this program is started by `zymdb serve`");
  }
  if (options.listen.empty() || optind != argc) throw WrongInput("this program is started by `zymdb serve`");
  return options;
}

// Every thread would keep what it once needed for itself.
void share_memory() {
#ifdef __GLIBC__
  mallopt(M_ARENA_MAX, 1);
#endif
}

}  // namespace

int main(int argc, char** argv) {
  share_memory();
  return run_program([&] {
    serve(read_options(argc, argv));
    return kDone;
  });
}
