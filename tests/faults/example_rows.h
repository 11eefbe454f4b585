// A small server's rows: enough that every operation finds what it looks for, and lists find two of it.
#ifndef ZYMDB_TESTS_FAULTS_EXAMPLE_ROWS_H
#define ZYMDB_TESTS_FAULTS_EXAMPLE_ROWS_H

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace faults {

constexpr int kSlot = 1;    // kind of place of an adapter or drive
constexpr int kBay = 2;     // of a drive
constexpr int kSlotNo = 1;  // of the network adapter, a data processing unit
constexpr int kFunction = 0x300;
constexpr int kAdapter = 65537;
constexpr int kHardware = 10;
constexpr int kDevice = 0xA2D6;
constexpr int kSubsystemDevice = 0x61;
constexpr int kGpuBus = 5;
constexpr int kNvmeSlot = 7;
constexpr int kDriveController = 0x700;
constexpr int kBayNo = 4;
constexpr char kSettingId[] = "Slot1Network.WakeOnLan";

using Value = std::variant<int64_t, std::string>;

// What a row states; its other columns hold 1, or "1" where they are texts.
using ExampleRow = std::map<std::string, Value>;

// By table, in the order of the rows. "propertiesDCTbl" is the property database's.
const std::map<std::string, std::vector<ExampleRow>>& example_rows();

}  // namespace faults

#endif
