#include "collect/rows/nvme_record.h"

#include <cstdio>
#include <cstring>

#include "common/text.h"

namespace zymdb::collect {
namespace {

template <size_t N>
void set_text(char (&field)[N], const std::optional<std::string>& text) {
  if (!text) return;
  const auto fitting = cut(*text, N - 1);
  std::memcpy(field, fitting.data(), fitting.size());
  field[fitting.size()] = '\0';
}

std::string trimmed_model(std::string model) {
  return trim_drive_model(model.data());
}

}  // namespace

NvmeRecord nvme_record(const Drive& drive, FunctionKey function, const DrivePlace& place) {
  _ZYMDB_AimDisk record{};
  record.PCIFuncKey = function.value;
  record.BayNo = place.number.value_or(0);
  if (place.location != ZYMDB_LOCATION_BAY) record.SlotNo = record.BayNo;
  record.LocationId = static_cast<uint8_t>(place.location);
  record.DriveTypeId = static_cast<uint8_t>(DriveBus::kNvme);
  set_text(record.Model, drive.model);
  set_text(record.SerialNo, drive.serial);
  set_text(record.FwVersion, drive.firmware);
  set_text(record.Manufacture, maker_of(drive));
  if (drive.model) set_text(record.PartNo, trimmed_model(*drive.model));
  if (drive.capacity) set_text(record.Capacity, capacity_text(*drive.capacity));
  if (drive.health) {
    record.Warning = drive.health->warning;
    record.Temperature = drive.health->temperature;
    record.RemainLife = drive.health->remaining_life;
    record.InfoMask = kAllHealth;
  }
  return {record, drive.health.has_value()};
}

// As the library writes the capacity of a drive that reports it.
std::string capacity_text(uint64_t bytes) {
  char text[17];
  if (bytes >= 1'000'000'000'000)
    std::snprintf(text, sizeof text, "%.2lfTB", static_cast<double>(bytes) / 1e12);
  else
    std::snprintf(text, sizeof text, "%.0lfGB", static_cast<double>(bytes) / 1e9);
  return text;
}

std::optional<std::string> maker_of(const Drive& drive) {
  if (drive.maker || !drive.model) return drive.maker;
  for (const std::string& model : {*drive.model, trimmed_model(*drive.model)}) {
    const std::string maker = driveModel2Manufacture(model.c_str());
    if (!maker.empty()) return maker;
  }
  return std::nullopt;
}

}  // namespace zymdb::collect
