// Whole machines as documents: the example server, and recorded ones.
#include <gmock/gmock.h>

#include "collect/collector.h"
#include "collect/machines.h"
#include "documents/applied.h"
#include "documents/check.h"
#include "documents/document_json.h"
#include "documents/draft.h"
#include "documents/inventory_types.h"
#include "records/pci.h"
#include "support/inventory.h"
#include "support/parsing_marker.h"

namespace zymdb::documents {
namespace {

using collect::RecordedFile;

class RecordedDocuments : public InventoryTest {
 protected:
  Document document_of(const collect::Sources& sources) {
    const std::string file = folder() / ("machine-" + std::to_string(++count_) + ".db");
    zym_db_close(get_dmdb_handle());
    setenv("ZYMDB_INVENTORY", file.c_str(), 1);
    const auto summary = collect::collect_inventory(sources);
    EXPECT_TRUE(summary.ok()) << summary.error;
    return read_document(types_);
  }

  static collect::Sources of_dump(const std::string& path) {
    return {.lspci = path, .smbios = "", .sysfs = ""};
  }

  std::vector<Document> all() {
    std::vector<Document> documents;
    for (const RecordedFile& file : collect::recorded_lspci_dumps())
      documents.push_back(document_of(of_dump(file.path)));
    for (const RecordedFile& file : collect::recorded_smbios_dumps())
      documents.push_back(document_of({.lspci = "", .smbios = file.path, .sysfs = ""}));
    return documents;
  }

  // The example server's running system, and the recorded archives that have PCI functions.
  std::vector<std::string> trees() {
    const std::string example = folder() / "example";
    collect::output_of("python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py '" + example + "'");
    std::vector<std::string> trees{example};
    for (const RecordedFile& archive : collect::recorded_sysfs_archives()) {
      const std::string to = folder() / archive.name;
      collect::output_of("mkdir '" + to + "' && tar -xf '" + archive.path +
                         "' --no-same-owner --delay-directory-restore -C '" + to + "' && chmod -R u+rwX '" +
                         to + "'");
      for (const auto& entry : std::filesystem::recursive_directory_iterator(to)) {
        const std::string path = entry.path().string();
        if (path.ends_with("/bus/pci/devices")) trees.push_back(path.substr(0, path.size() - 16));
      }
    }
    return trees;
  }

  const std::vector<RecordType> types_ = inventory_types(records::kPciIdsFile);
  ParsingMarker marker_;  // nobody stores settings meanwhile
  int count_ = 0;
};

TEST_F(RecordedDocuments, ReadBackFromJson) {
  for (const Document& document : all()) {
    const Document again = parse_document(to_json(document), "export.json", types_);
    const auto changes = difference(document, again, {.with_volatile = true});
    ASSERT_TRUE(changes.empty()) << text_of(changes.front());
  }
}

TEST_F(RecordedDocuments, AreEqualOnceTheirDifferenceIsApplied) {
  const auto documents = all();
  ASSERT_GE(documents.size(), 2u);
  for (const Document& before : documents) {
    for (const Document& after : documents) {
      const DifferenceOptions options{.with_volatile = true};
      const auto rest = difference(applied(before, difference(before, after, options)), after, options);
      ASSERT_TRUE(rest.empty()) << text_of(rest.front());
    }
  }
}

std::vector<std::string> own_failures(const Document& document, const std::vector<RecordType>& types) {
  std::vector<std::string> texts;
  for (const Verdict& verdict : check(parse_expectations(draft(document), "draft", types), document)) {
    for (const Failure& failure : verdict.failures)
      texts.push_back(verdict.part_class + " " + verdict.title + " | " + text_of(failure));
  }
  return texts;
}

TEST_F(RecordedDocuments, AreWhatWasDraftedFromThem) {
  for (const Document& document : all()) EXPECT_THAT(own_failures(document, types_), testing::IsEmpty());
  for (const std::string& tree : trees())
    EXPECT_THAT(own_failures(document_of({.lspci = "", .smbios = "", .sysfs = tree}), types_),
                testing::IsEmpty())
        << tree;
}

// Buses are numbered anew when a card with a bridge is plugged in: the functions behind it are the same.
TEST_F(RecordedDocuments, KnowTheirFunctionsWhereBusesGotOtherNumbers) {
  std::string dump = collect::read_file(ZYMDB_EXAMPLE_SERVER "/server.lspci");
  const Document before = document_of(of_dump(ZYMDB_EXAMPLE_SERVER "/server.lspci"));
  size_t renamed = 0;
  for (size_t at = dump.find("\ne5:"); at != std::string::npos; at = dump.find("\ne5:", at + 1)) {
    dump.replace(at + 1, 2, "e9");
    ++renamed;
  }
  ASSERT_GE(renamed, 1u);
  const std::string file = folder() / "renumbered.lspci";
  std::ofstream(file) << dump;
  const Document after = document_of(of_dump(file));
  size_t moved = 0;
  for (const Change& change : difference(before, after)) {
    if (change.part_class != "functions") continue;
    EXPECT_NE(change.kind, ChangeKind::kAdded) << text_of(change);
    EXPECT_NE(change.kind, ChangeKind::kReplaced) << text_of(change);
    moved += change.kind == ChangeKind::kMoved ? 1 : 0;
  }
  EXPECT_EQ(moved, renamed);
}

}  // namespace
}  // namespace zymdb::documents
