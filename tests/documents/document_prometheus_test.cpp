// Documents as metrics.
#include "documents/document_prometheus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "documents/documents.h"
#include "documents/inventory_types.h"
#include "records/units.h"

namespace zymdb::documents {
namespace {

using records::Kind;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

FieldInfo number(const char* key, Role role = Role::kStable) {
  FieldInfo info = field(key, "", role);
  info.kind = Kind::kNumber;
  return info;
}

FieldInfo amount(const char* key, const char* unit = "", Role role = Role::kStable) {
  FieldInfo info = number(key, role);
  info.unit = unit;
  info.is_amount = true;
  return info;
}

std::vector<RecordType> types() {
  RecordType type;
  type.name = "modules";
  type.description = "Memory modules";
  type.fields = fields();
  return {type};
}

std::string metrics_of(const PartClass& of) {
  return to_prometheus({std::nullopt, {of}}, types());
}

std::string metrics(const std::vector<Module>& modules) {
  return to_prometheus(document(modules), types());
}

TEST(MetricName, IsOfTheFieldAndItsBaseUnit) {
  struct Case {
    FieldInfo field;
    const char* name;
  };
  const Case cases[] = {
      {amount("MemSize", "MiB"), "mem_size_bytes"},
      {amount("LinkSpeed", "Mbit/s", Role::kState), "link_speed_bytes_per_second"},
      {amount("CoreCount"), "cores"},
      {amount("MaxPCIeType"), "max_pcie_type"},
      {amount("L1CacheMaxSize", "KiB"), "l1_cache_max_size_bytes"},
      {amount("GPUChipMaxClockSpeed"), "gpu_chip_max_clock_speed"},
      {number("SFlags", Role::kState), "sflags"},
      {number("IOMMUGroup", Role::kState), "iommu_group"},
      {number("vNICMode", Role::kState), "vnic_mode"},
      {field("LinkState", "", Role::kState), "link_state_info"},
      {field("CollectedFrom", "", Role::kVolatile), "collected_from_info"},
      // Labels of the class's info metric.
      {number("SlotType"), ""},
      {field("SerialNo", "", Role::kIdentity), ""},
      {field("Place", "", Role::kPlace), ""},
      // Left out.
      {number("_id", Role::kRow), ""},
  };
  for (const auto& [field, name] : cases) EXPECT_EQ(metric_name(field), name) << field.key;
}

TEST(MetricName, OfATextMadeOfAVolatileValueIsNone) {
  FieldInfo collected = field("Collected", "", Role::kVolatile);
  collected.is_derived = true;
  EXPECT_EQ(metric_name(collected), "");
  collected.role = Role::kState;
  EXPECT_EQ(metric_name(collected), "collected_info");
}

TEST(MetricName, IsThereOnceInEachClassWithABaseUnit) {
  for (const RecordType& type : inventory_types("")) {
    std::set<std::string> names;
    for (const FieldInfo& each : type.fields) {
      EXPECT_EQ(each.unit[0] != '\0', records::base_unit(each.unit) != nullptr)
          << type.name << "." << each.key;
      const std::string name = metric_name(each);
      EXPECT_TRUE(name.empty() || names.insert(name).second) << type.name << ": " << name;
      EXPECT_NE(name, "info") << type.name << "." << each.key;
    }
  }
}

TEST(DocumentPrometheus, TellsWhatAPartIsAndHowItIs) {
  EXPECT_THAT(
      metrics({{.place = "A1", .health = "bad", .load = 3}}),
      HasSubstr("# HELP zymdb_modules_info Memory modules\n"
                "# TYPE zymdb_modules_info gauge\n"
                "zymdb_modules_info{part=\"A1\",place=\"A1\",serial=\"s1\",model=\"m1\",size=\"32 GiB\","
                "detail=\"d\"} 1\n"
                "# HELP zymdb_modules_health_info Memory modules: \n"
                "# TYPE zymdb_modules_health_info gauge\n"
                "zymdb_modules_health_info{part=\"A1\",health=\"bad\"} 1\n"));
}

TEST(DocumentPrometheus, LeavesOutWhatNobodyKnows) {
  const std::string text = metrics({{.serial = "", .health = ""}});
  EXPECT_THAT(text, HasSubstr("{part=\"A1\",place=\"A1\",model=\"m1\""));
  EXPECT_THAT(text, Not(HasSubstr("health")));
}

TEST(DocumentPrometheus, WritesAmountsInBaseUnits) {
  PartClass of{"modules", {field("Place", "", Role::kPlace), amount("MemSize", "MiB"), number("Code")}, {}};
  of.parts = {{std::string("A1"), uint64_t{2}, uint64_t{7}}, {std::string("A2"), Value(), uint64_t{7}}};
  const std::string text = metrics_of(of);
  EXPECT_THAT(text, HasSubstr("zymdb_modules_mem_size_bytes{part=\"A1\"} 2097152\n"));
  EXPECT_THAT(text, Not(HasSubstr("zymdb_modules_mem_size_bytes{part=\"A2\"}")));
  EXPECT_THAT(text, HasSubstr("place=\"A1\",code=\"7\"} 1\n"));
}

TEST(DocumentPrometheus, EscapesWhatWouldEndALabelOrALine) {
  EXPECT_THAT(metrics({{.place = "<script>\"\\\n\xff"}}),
              HasSubstr("zymdb_modules_info{part=\"<script>\\\"\\\\\\n\xEF\xBF\xBD\",place=\"<script>"
                        "\\\"\\\\\\n\xEF\xBF\xBD\","));
  auto hostile = types();
  hostile.front().description = "two\nlines \\";
  EXPECT_THAT(to_prometheus(document({{}}), hostile),
              HasSubstr("# HELP zymdb_modules_info two\\nlines \\\\\n"));
}

TEST(DocumentPrometheus, TellsGenerationVersionAndTheNumberOfParts) {
  Document document = zymdb::documents::document({{}, {}});
  EXPECT_THAT(to_prometheus(document, types()), Not(HasSubstr("generation")));
  document.generation = 12;
  const std::string text = to_prometheus(document, types());
  EXPECT_THAT(text, StartsWith("# HELP zymdb_build_info "));
  EXPECT_THAT(text, HasSubstr("\nzymdb_inventory_generation 12\n"));
  EXPECT_THAT(text, HasSubstr("\nzymdb_parts{class=\"modules\"} 2\n"));
}

TEST(DocumentPrometheus, OfNoPartsHasNoMetricsOfThem) {
  EXPECT_THAT(metrics({}), Not(HasSubstr("zymdb_modules")));
}

}  // namespace
}  // namespace zymdb::documents
