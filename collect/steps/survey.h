// What every class of hardware is collected from.
#ifndef ZYMDB_COLLECT_STEPS_SURVEY_H
#define ZYMDB_COLLECT_STEPS_SURVEY_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/report.h"
#include "collect/rows/system_rows.h"
#include "collect/sources/pci/pci_ids.h"
#include "collect/sources/sources.h"
#include "collect/sources/sysfs/drivers.h"
#include "common/source_access.h"

namespace zymdb::collect {

// The machine as PCI functions and SMBIOS tell it, and where more is told of it.
class Survey {
 public:
  // Reads the sources, PCI functions where they are wanted; what is missing is told to `observer`. Throws
  // SourceError.
  Survey(const Sources& sources, const Observer& observer, bool wants_functions);

  const Machine& machine() const { return machine_; }
  const PciIds& names() const { return names_; }

  // Nothing: no source tells of it.
  const std::optional<System>& system() const { return system_; }

  // The root of the sysfs tree; empty when there is none.
  const std::string& sysfs() const { return sources_.sysfs; }

  // The drivers of the machine that the tree is of.
  const Drivers& drivers() const { return drivers_; }

  // Whether the SMBIOS tables have more than could be read.
  bool smbios_breaks_off() const { return smbios_breaks_off_; }

  // Whether SMBIOS did not answer, so that nobody knows where things are.
  bool smbios_is_silent() const { return smbios_is_silent_; }

  // Whether empty sources are to be believed.
  bool allows_empty() const { return sources_.allow_empty; }

  void note(const std::string& line) const;

  // Whether a source told of something. One with nothing in it counts as no source, unless that is allowed:
  // it is told to the observer as "no `what`: they are left as they are".
  template <class Record>
  bool is_told(const std::optional<std::vector<Record>>& found, std::string_view what) const {
    if (!found) return false;
    if (found->empty() && !allows_empty()) note_left(what);
    return !found->empty() || allows_empty();
  }

  void note_left(std::string_view what) const;
  // `problem` is a NoAnswer's text.
  void note_silent(std::string_view problem, std::string_view what) const;

 private:
  // What a source answers; nothing of it when it does not, which is a notice.
  template <class Read>
  auto unless_silent(std::string_view what, Read read) const -> decltype(read()) {
    try {
      return read();
    } catch (const NoAnswer& problem) {
      note_silent(problem.what(), what);
      return {};
    }
  }

  Findings find_all(bool wants_functions);
  std::optional<std::vector<PciFunction>> find_functions() const;
  std::vector<PciFunction> find_recorded_functions() const;
  std::optional<SmbiosTables> find_smbios();
  std::optional<SmbiosTables> parse_smbios() const;
  std::optional<SmbiosTables> parse_tables_of_tree() const;
  std::optional<System> find_system() const;
  PciIds find_names() const;
  std::string function_source() const;

  Sources sources_;
  const Observer& observer_;
  Drivers drivers_;
  bool smbios_breaks_off_ = false;
  bool smbios_is_silent_ = false;
  Machine machine_;
  std::optional<System> system_;
  PciIds names_;
};

}  // namespace zymdb::collect

#endif
