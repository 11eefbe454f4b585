// zymdb: the command line of the host inventory.

#include <clocale>
#include <new>
#include <sstream>

#include "commands/commands.h"
#include "terminal/failure.h"
#include "terminal/log.h"
#include "terminal/terminal.h"

namespace {

using namespace zymdb::tool;

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

// Help and version are "errors" of the parser that succeed.
int end_parse(const CLI::App& app, const CLI::ParseError& error) {
  std::ostringstream text;
  std::ostringstream ignored;
  if (app.exit(error, text, ignored) == kDone) {
    write_output(text.str());
    return kDone;
  }
  complain(explain(app, error));
  return kWrongUsage;
}

// Commands run within parse(), as callbacks.
int run(CommandTree& tree, int argc, char** argv) {
  try {
    build_command_tree(tree);
    tree.app.parse(argc, argv);
    return kDone;
  } catch (const CLI::ParseError& error) {
    return end_parse(tree.app, error);
  }
}

}  // namespace

int main(int argc, char** argv) {
  prepare_standard_streams();
  leave_system_log_alone();
  std::setlocale(LC_CTYPE, "");
  try {
    CommandTree tree;
    return run(tree, argc, argv);
  } catch (const ReaderGone&) {
    return kDone;
  } catch (const WrongInput& failure) {
    complain(failure.what());
    return kWrongUsage;
  } catch (const Different&) {
    return kFailed;
  } catch (const std::bad_alloc&) {
    complain("out of memory");
  } catch (const std::exception& failure) {
    complain(failure.what());
  }
  return kFailed;
}
