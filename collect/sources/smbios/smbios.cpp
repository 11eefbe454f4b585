#include "collect/sources/smbios/smbios.h"

#include <algorithm>

#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr std::string_view kAnchor64 = "_SM3_";
constexpr std::string_view kAnchor32 = "_SM_";
constexpr size_t kEntry64Size = 0x18;
constexpr size_t kEntry32Size = 0x1F;
constexpr size_t kEntry32Intermediate = 0x10;  // a second part with an anchor and checksum of its own
constexpr size_t kHeaderSize = 4;
constexpr uint8_t kTypeEndOfTable = 127;

bool is_valid(Bytes entry, size_t least) {
  return entry.size() >= least && checksum(entry) == 0;
}

// A byte with the major version, and one with the minor.
unsigned version_at(Bytes entry, size_t offset) {
  const auto byte = [&](size_t at) { return little_endian<uint8_t>(entry, at).value_or(0); };
  return static_cast<unsigned>(byte(offset) << 8 | byte(offset + 1));
}

// Walks the structures of a table of known bounds.
class Walk {
 public:
  explicit Walk(Bytes table) : table_(table) {}

  size_t position() const { return position_; }

  // What is wrong at the position; empty while nothing is.
  std::string_view problem() const { return problem_; }

  // Nothing at the end of the table, and where it breaks off.
  std::optional<SmbiosStructure> next() {
    if (position_ == table_.size()) return std::nullopt;
    const size_t length = little_endian<uint8_t>(table_, position_ + 1).value_or(kHeaderSize);
    if (length < kHeaderSize) return stop("a structure shorter than its header (cut short?)");
    const Bytes formatted = slice(table_, position_, length);
    const Bytes rest = slice(table_, position_ + length);
    const size_t texts = find_texts_end(rest);
    if (formatted.size() < length || texts == rest.size())
      return stop("the table ends inside a structure (cut short?)");
    position_ += length + texts + 2;
    return SmbiosStructure(formatted, rest.first(texts + 1));
  }

 private:
  std::nullopt_t stop(std::string_view problem) {
    problem_ = problem;
    return std::nullopt;
  }

  // Where the two NULs start that end a structure's texts; the size when they are not there.
  static size_t find_texts_end(Bytes rest) {
    const std::string_view end("\0\0", 2);
    return std::min(as_text(rest).find(end), rest.size());
  }

  Bytes table_;
  size_t position_ = 0;
  std::string_view problem_;
};

}  // namespace

std::optional<std::string> SmbiosStructure::text(size_t offset) const {
  std::string_view rest = as_text(texts_);
  for (unsigned number = field<uint8_t>(offset).value_or(0); number > 0; --number) {
    const size_t end = rest.find('\0');
    if (end == std::string_view::npos || end == 0) return std::nullopt;
    if (number == 1) return known_text(rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
  return std::nullopt;
}

struct SmbiosTables::EntryPoint {
  uint64_t address;  // of the table; in a dump its offset in the file
  size_t size;       // of the table; in the 64-bit form at most that
  bool size_is_exact;
  unsigned version;
  size_t structures;  // 0 where it does not say how many there are
};

SmbiosTables::EntryPoint SmbiosTables::parse_entry_point(Bytes bytes, std::string_view name) {
  const std::string_view text = as_text(bytes);
  if (text.starts_with(kAnchor64)) {
    const Bytes entry = slice(bytes, 0, little_endian<uint8_t>(bytes, 6).value_or(0));
    if (!is_valid(entry, kEntry64Size))
      throw SourceError::at_offset(name, 0, "a damaged SMBIOS 3 entry point");
    return {little_endian<uint64_t>(entry, 0x10).value_or(0),
            little_endian<uint32_t>(entry, 0x0c).value_or(0), false, version_at(entry, 0x07), 0};
  }
  if (!text.starts_with(kAnchor32)) throw SourceError::at_offset(name, 0, "no SMBIOS entry point");
  const Bytes entry =
      slice(bytes, 0, std::max<size_t>(little_endian<uint8_t>(bytes, 5).value_or(0), kEntry32Size));
  const Bytes intermediate = slice(bytes, kEntry32Intermediate, kEntry32Size - kEntry32Intermediate);
  if (!is_valid(entry, kEntry32Size) || !as_text(intermediate).starts_with("_DMI_") ||
      checksum(intermediate) != 0) {
    throw SourceError::at_offset(name, 0, "a damaged SMBIOS 2 entry point");
  }
  return {little_endian<uint32_t>(entry, 0x18).value_or(0), little_endian<uint16_t>(entry, 0x16).value_or(0),
          true, version_at(entry, 0x06), little_endian<uint16_t>(entry, 0x1C).value_or(0)};
}

SmbiosTables::SmbiosTables(std::string_view bytes, size_t offset, const EntryPoint& entry,
                           std::string_view name)
    : bytes_(bytes.begin(), bytes.end()), version_(entry.version) {
  if (offset >= bytes_.size())
    throw SourceError::at_offset(name, bytes_.size(), "the file ends before its table");
  const Bytes table = slice(bytes_, offset, entry.size);
  Walk walk(table);
  bool ended = false;
  while (const auto structure = ended ? std::nullopt : walk.next()) {
    structures_.push_back(*structure);
    ended = structure->type() == kTypeEndOfTable;
  }
  std::string_view problem = walk.problem();
  // The 64-bit form gives no exact size: without the last structure only its bound tells that nothing is
  // missing.
  if (problem.empty() && !ended && table.size() < entry.size)
    problem = entry.size_is_exact ? "the file ends inside its table (cut short?)"
                                  : "the table ends without its end structure (cut short?)";
  if (!problem.empty()) note_break(SourceError::at_offset(name, offset + walk.position(), problem));
  if (is_whole_ && structures_.size() < entry.structures)
    notices_.push_back(std::string(name) + ": " + std::to_string(structures_.size()) +
                       " structures, where the entry point announces " + std::to_string(entry.structures));
}

// Bytes of which nothing can be read are no table.
void SmbiosTables::note_break(const SourceError& problem) {
  if (structures_.empty()) throw problem;
  is_whole_ = false;
  notices_.push_back(problem.what() + std::string(": what comes before it is read"));
}

SmbiosTables SmbiosTables::parse_dump(std::string_view bytes, std::string_view name) {
  const EntryPoint entry = parse_entry_point(as_bytes(bytes), name);
  const auto offset = static_cast<size_t>(std::min<uint64_t>(entry.address, bytes.size()));
  return {bytes, offset, entry, name};
}

SmbiosTables SmbiosTables::parse(Bytes entry_point, std::string_view table, std::string_view name) {
  return {table, 0, parse_entry_point(entry_point, name), name};
}

}  // namespace zymdb::collect
