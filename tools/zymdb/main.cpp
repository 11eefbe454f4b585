// zymdb: the command line of the host inventory.

#include <clocale>
#include <sstream>

#include "commands/commands.h"
#include "terminal/program.h"
#include "terminal/terminal.h"

namespace {

using namespace zymdb::tool;

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
  return run_program([&] {
    std::setlocale(LC_CTYPE, "");
    CommandTree tree;
    return run(tree, argc, argv);
  });
}
