#include "files/document_file.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>
#include <system_error>

#include "common/client_objects.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "documents/document_json.h"
#include "documents/snapshot.h"
#include "show/inventory.h"
#include "terminal/failure.h"

namespace zymdb::tool {
namespace {

constexpr char kStandardInput[] = "-";

std::string read_standard_input() {
  std::string content;
  std::array<char, 65536> block;
  ssize_t count = 0;
  while ((count = ::read(STDIN_FILENO, block.data(), block.size())) != 0) {
    if (count < 0 && errno != EINTR)
      throw SourceError("standard input", std::generic_category().message(errno));
    if (count > 0) content.append(block.data(), static_cast<size_t>(count));
  }
  return content;
}

// Neither a database nor a snapshot can be opened but as a file.
documents::Document read_piped(const std::string& content, const std::vector<records::RecordType>& types) {
  const std::string name = "standard input";
  const bool is_snapshot = documents::is_snapshot(content);
  if (!is_snapshot && !documents::is_database(content))
    return documents::parse_document(content, name, types);
  const documents::ScratchFolder scratch;
  const std::string copy = scratch.file("inventory.db");
  write_new_file(copy, is_snapshot ? documents::unpack(content, name).database : content);
  open_instead(copy);
  return documents::read_document(types);
}

documents::Document read_file(const std::string& path, const std::vector<records::RecordType>& types) {
  const bool is_inventory = documents::is_snapshot_file(path) || documents::is_database_file(path);
  if (!is_inventory) return documents::parse_document(read_source(path), path, types);
  open_instead(path);
  return documents::read_document(types);
}

// Whoever reads one is told what is wrong with it, whichever form it has.
documents::Document loaded(const std::function<documents::Document()>& read) {
  try {
    return read();
  } catch (const SourceError& error) {
    throw WrongInput(error.what());
  } catch (const DatabaseError& error) {
    throw WrongInput(error.what());
  } catch (const Failure& error) {
    throw WrongInput(error.what());
  }
}

}  // namespace

documents::Document load_document(const std::string& path, const std::vector<records::RecordType>& types) {
  return loaded([&] {
    return path == kStandardInput ? read_piped(read_standard_input(), types) : read_file(path, types);
  });
}

documents::Document load_chosen_document(const std::vector<records::RecordType>& types) {
  return loaded([&] {
    if (documents::is_export_file(inventory_location())) return read_file(inventory_location(), types);
    open_inventory(Opening::kReading);
    return documents::read_document(types);
  });
}

}  // namespace zymdb::tool
