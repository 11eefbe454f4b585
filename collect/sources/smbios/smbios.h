// SMBIOS tables: what the firmware tells of the machine. This file finds the structures; smbios_decode.h
// reads the ones the collector knows.
#ifndef ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_H
#define ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/bytes.h"
#include "common/source_file.h"

namespace zymdb::collect {

// One structure: a formatted area whose length depends on the version of the table, and texts.
class SmbiosStructure {
 public:
  // `formatted` starts with the header (type, length, handle: 4 bytes); `texts` are NUL-terminated.
  SmbiosStructure(Bytes formatted, Bytes texts) : formatted_(formatted), texts_(texts) {}

  uint8_t type() const { return formatted_[0]; }
  uint16_t handle() const { return little_endian<uint16_t>(formatted_, 2).value_or(0); }
  size_t length() const { return formatted_.size(); }

  // A field at its offset from the header; nothing where the structure is too short to have it.
  template <std::unsigned_integral T>
  std::optional<T> field(size_t offset) const {
    return little_endian<T>(formatted_, offset);
  }

  // The text whose number stands in the byte at `offset`; nothing when there is none or it is a placeholder.
  std::optional<std::string> text(size_t offset) const;

 private:
  Bytes formatted_;
  Bytes texts_;
};

// The structures of a table, and the bytes that they lie in.
class SmbiosTables {
 public:
  // A file as `dmidecode --dump-bin` writes it: an entry point (32- or 64-bit) and the table where that says.
  // Throws SourceError with the offset when it is anything else, or so short that no structure is whole;
  // `name` is the file's name there.
  static SmbiosTables parse_dump(std::string_view bytes, std::string_view name);

  // The two files that Linux has in firmware/dmi/tables.
  static SmbiosTables parse(Bytes entry_point, std::string_view table, std::string_view name);

  SmbiosTables(SmbiosTables&&) = default;
  SmbiosTables& operator=(SmbiosTables&&) = default;

  const std::vector<SmbiosStructure>& structures() const { return structures_; }

  // Whether the table has its end. One that breaks off has the structures before that.
  bool is_whole() const { return is_whole_; }

  // One line each, with the name and offset: where the table breaks off, structures that it lacks.
  const std::vector<std::string>& notices() const { return notices_; }

  // Of SMBIOS, as the entry point states it: 0x0306 is 3.6.
  unsigned version() const { return version_; }

 private:
  struct EntryPoint;
  static EntryPoint parse_entry_point(Bytes bytes, std::string_view name);

  SmbiosTables(std::string_view bytes, size_t offset, const EntryPoint& entry, std::string_view name);
  void note_break(const SourceError& problem);

  std::vector<uint8_t> bytes_;  // structures_ point into it; stays in place when the object is moved
  std::vector<SmbiosStructure> structures_;
  std::vector<std::string> notices_;
  bool is_whole_ = true;
  unsigned version_;
};

}  // namespace zymdb::collect

#endif
