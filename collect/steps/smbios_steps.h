// What SMBIOS tells of, each class on its own: tables without any of a class leave its rows as they are.
// Without them the system tells of processors and memory, in rows that give way to SMBIOS's.
#ifndef ZYMDB_COLLECT_STEPS_SMBIOS_STEPS_H
#define ZYMDB_COLLECT_STEPS_SMBIOS_STEPS_H

#include "collect/steps/step.h"

namespace zymdb::collect {

RowMaker collect_system(const Survey& survey);
RowMaker collect_processors(const Survey& survey);
RowMaker collect_memory(const Survey& survey);
RowMaker collect_system_firmware(const Survey& survey);

}  // namespace zymdb::collect

#endif
