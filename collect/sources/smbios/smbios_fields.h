// Small readings that decoders of SMBIOS structures share.
#ifndef ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_FIELDS_H
#define ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "collect/sources/smbios/smbios.h"

namespace zymdb::collect {

template <typename Record>
std::vector<Record> decode_all(const SmbiosTables& tables, uint8_t type,
                               Record (*decode)(const SmbiosTables&, const SmbiosStructure&)) {
  std::vector<Record> records;
  for (const auto& structure : tables.structures()) {
    if (structure.type() == type) records.push_back(decode(tables, structure));
  }
  return records;
}

// The structure of a type and handle; null when there is none.
inline const SmbiosStructure* find_structure(const SmbiosTables& tables, uint8_t type, uint16_t handle) {
  for (const auto& structure : tables.structures()) {
    if (structure.type() == type && structure.handle() == handle) return &structure;
  }
  return nullptr;
}

// A field in which 0 means that nobody knows.
template <typename T>
std::optional<T> nonzero(const SmbiosStructure& structure, size_t offset) {
  const auto value = structure.field<T>(offset);
  return value == T{0} ? std::nullopt : value;
}

// A field in which all ones mean that nobody knows.
template <typename T>
std::optional<T> unless_ones(const SmbiosStructure& structure, size_t offset) {
  const auto value = structure.field<T>(offset);
  return value == static_cast<T>(~T{0}) ? std::nullopt : value;
}

}  // namespace zymdb::collect

#endif
