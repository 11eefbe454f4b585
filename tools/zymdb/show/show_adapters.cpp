#include <algorithm>
#include <tuple>

#include "commands/commands.h"
#include "show/inventory.h"
#include "show/pci_text.h"
#include "zymdb_pci.h"

namespace zymdb::tool {
namespace {

using Record = _ZYMDB_PCI_Adapter;

constexpr char kExamples[] =
    "  zymdb show adapters\n"
    "  zymdb show adapters --columns PLACE,NAME,KEY\n"
    "  zymdb show adapters --json | jq -r '.adapters[].CardName'";

Value place(const Record& adapter) {
  return place_text(adapter.Location, adapter.SlotNo);
}

constexpr Column<Record> kColumns[] = {
    derived<Record>("PLACE", "slot, drive bay or system board (Location and SlotNo)", Shown::kByDefault,
                    place),
    field<Record, &Record::PCIKey, 8>("PCIKey", "KEY", "PCI key, shared by the adapter's functions",
                                      Shown::kByDefault),
    field<Record, &Record::NodeNo>("NodeNo", "NODE", "node that the adapter belongs to"),
    field<Record, &Record::SlotNo>("SlotNo", "SLOTNO", "slot number within the location"),
    field<Record, &Record::ConnectorType, 4>("ConnectorType", "CONNECTORTYPE", "connector or slot type code"),
    field<Record, &Record::ConnectorTypeName>("ConnectorTypeName", "CONNECTOR", "connector or slot type",
                                              Shown::kByDefault),
    long_text(field<Record, &Record::CardName>("CardName", "NAME", "name", Shown::kByDefault)),
    field<Record, &Record::AIMSupported>("AIMSupported", "AIM", "how it is managed: 1 out of band"),
    field<Record, &Record::Location>("Location", "LOCATION", "0 system board, 1 slot, 2 drive bay"),
    field<Record, &Record::HealthStatus>("HealthStatus", "HEALTH", "health, as its writer codes it"),
    field<Record, &Record::NcsiIdValid>("NcsiIdValid", "NCSI", "1: the slot has NC-SI package ids"),
    field<Record, &Record::PackageID1>("PackageID1", "PACKAGE1", "first NC-SI package id; 255: none"),
    field<Record, &Record::PackageID2>("PackageID2", "PACKAGE2", "second NC-SI package id; 255: none"),
};

std::vector<Record> read_adapters() {
  _ZYMDB_PCI_Adapter_List list{};
  const int status = zymdb_get_pci_adapter_list(&list);
  auto adapters = take_array(list.adapters, list.count);
  require_status(status, "read the adapters");
  std::sort(adapters.begin(), adapters.end(), [](const Record& a, const Record& b) {
    return std::tie(a.Location, a.SlotNo, a.PCIKey) < std::tie(b.Location, b.SlotNo, b.PCIKey);
  });
  return adapters;
}

}  // namespace

void add_show_adapters(CommandTree& tree, CLI::App& show) {
  add_listing(tree, show,
              make_listing<Record>("adapters", "Adapters: cards, drives and on-board devices", kColumns,
                                   read_adapters),
              kExamples);
}

}  // namespace zymdb::tool
