// The columns of Memory and the fields that they fill.
#ifndef ZYMDB_SRC_CPU_MEM_MEMORY_COLUMNS_H
#define ZYMDB_SRC_CPU_MEM_MEMORY_COLUMNS_H

#include "db/column.h"
#include "zymdb_cpu_mem.h"

namespace zymdb {

inline constexpr auto kMemoryColumns = columns_of<_ZYMDB_Memory>({
    ZYMDB_FIELD(_ZYMDB_Memory, _id),
    ZYMDB_FIELD(_ZYMDB_Memory, ArrayId),
    ZYMDB_FIELD(_ZYMDB_Memory, SlotNo),
    ZYMDB_FIELD(_ZYMDB_Memory, TotalWidth),
    ZYMDB_FIELD(_ZYMDB_Memory, DataWidth),
    ZYMDB_FIELD(_ZYMDB_Memory, MemSize),
    ZYMDB_FIELD(_ZYMDB_Memory, FormFactor),
    ZYMDB_FIELD(_ZYMDB_Memory, MemType),
    ZYMDB_FIELD(_ZYMDB_Memory, TypeDetail),
    ZYMDB_FIELD(_ZYMDB_Memory, MaxSpeed),
    ZYMDB_FIELD(_ZYMDB_Memory, ClockSpeed),
    ZYMDB_FIELD(_ZYMDB_Memory, DevLocator),
    ZYMDB_FIELD(_ZYMDB_Memory, BankLocator),
    ZYMDB_FIELD(_ZYMDB_Memory, Manufacturer),
    ZYMDB_FIELD(_ZYMDB_Memory, SerialNo),
    ZYMDB_FIELD(_ZYMDB_Memory, AssetTag),
    ZYMDB_FIELD(_ZYMDB_Memory, PartNo),
    ZYMDB_FIELD(_ZYMDB_Memory, Attributes),
    ZYMDB_FIELD(_ZYMDB_Memory, Capacity),
    ZYMDB_FIELD(_ZYMDB_Memory, MemCapacity),
    ZYMDB_FIELD(_ZYMDB_Memory, AppDirCap),
    ZYMDB_FIELD(_ZYMDB_Memory, UnconfigCap),
    ZYMDB_FIELD(_ZYMDB_Memory, InaccCap),
    ZYMDB_FIELD(_ZYMDB_Memory, ReservedCap),
    ZYMDB_FIELD(_ZYMDB_Memory, Classification),
    ZYMDB_FIELD(_ZYMDB_Memory, RemainingLife),
    ZYMDB_FIELD(_ZYMDB_Memory, SecurityState),
    ZYMDB_FIELD(_ZYMDB_Memory, CPUIndex),
    ZYMDB_FIELD(_ZYMDB_Memory, iMCNum),
    ZYMDB_FIELD(_ZYMDB_Memory, ChannelNum),
    ZYMDB_FIELD(_ZYMDB_Memory, DimmNum),
    ZYMDB_FIELD(_ZYMDB_Memory, HealthStatus),
    ZYMDB_FIELD(_ZYMDB_Memory, AlarmTrips),
    ZYMDB_FIELD(_ZYMDB_Memory, LDShutdownCount),
    ZYMDB_FIELD(_ZYMDB_Memory, AITDRAMStatus),
    ZYMDB_FIELD(_ZYMDB_Memory, HealthStatusReason),
    ZYMDB_FIELD(_ZYMDB_Memory, LLShutdownStatus),
    ZYMDB_FIELD(_ZYMDB_Memory, InfoMask),
    ZYMDB_FIELD(_ZYMDB_Memory, FirmwareVersion),
    ZYMDB_FIELD(_ZYMDB_Memory, SoftwareID),
    ZYMDB_FIELD(_ZYMDB_Memory, NodeIndex),
    ZYMDB_FIELD(_ZYMDB_Memory, MajorHealth),
    ZYMDB_FIELD(_ZYMDB_Memory, MinorHealth),
    ZYMDB_FIELD(_ZYMDB_Memory, RepairStatus),
});

}  // namespace zymdb

#endif
