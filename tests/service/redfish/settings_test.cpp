// Settings of adapters as attributes that take effect with the next reset.
#include "service/redfish/redfish_fixture.h"

namespace zymdb::service {
namespace {

using testing::HasSubstr;

class RedfishSettings : public RedfishTest {
 protected:
  RedfishSettings() {
    given_setting("Boot.4b0000", "None", "None;PXE;iSCSI");
    given_setting("Vlan.4b0000", "0", "", 1, 4094);
    given_setting("Name.4b0000", "port");
    given_setting(std::string(70, 'x') + ".1", "port");
  }

  Response patch(const Json& body, Role role = Role::kOperator, Fields headers = {}) {
    return send(Method::kPatch, kSettingsPath, body.dump(), role, std::move(headers));
  }
  static Json attributes(const Json& values) { return {{"Attributes", values}}; }

  Json pending() { return json_of(get(kSettingsPath))["Attributes"]; }
};

TEST_F(RedfishSettings, BecomePendingAndLeaveWhatIsInForce) {
  const Response response = patch(attributes({{"Boot_4b0000", "PXE"}, {"Vlan_4b0000", 40}}));
  ASSERT_EQ(response.status, 200) << body_of(response);
  EXPECT_EQ(json_of(response)["Attributes"]["Boot_4b0000"], "PXE");
  EXPECT_EQ(json_of(response)["Attributes"]["Vlan_4b0000"], 40);
  EXPECT_EQ(header_of(response, "ETag"), header_of(get(kSettingsPath), "ETag"));
  EXPECT_EQ(json_of(get("/redfish/v1/Systems/1/Bios"))["Attributes"]["Boot_4b0000"], "None");
  EXPECT_EQ(rows("PCISetting", {"PendingValue"}, "SettingID='Boot.4b0000'"), "PXE\n");
}

TEST_F(RedfishSettings, AreForOperators) {
  EXPECT_EQ(patch(attributes({{"Boot_4b0000", "PXE"}}), Role::kReadOnly).status, 403);
  EXPECT_EQ(pending()["Boot_4b0000"], "None");
}

TEST_F(RedfishSettings, AreNotChangedWhereNothingWouldBeKept) {
  redfish_ = std::make_unique<Redfish>(current_, accounts_, RedfishOptions{.is_read_only = true});
  const Response response = patch(attributes({{"Boot_4b0000", "PXE"}}));
  EXPECT_EQ(response.status, 405);
  EXPECT_EQ(header_of(response, "Allow"), "GET, HEAD");
  EXPECT_EQ(header_of(get(kSettingsPath), "Allow"), "GET, HEAD");
  EXPECT_EQ(pending()["Boot_4b0000"], "None");
}

TEST_F(RedfishSettings, AreRefusedAsAWholeForAValueThatCannotBe) {
  const std::pair<Json, const char*> cases[] = {{"Wheels", "PropertyValueNotInList"},
                                                {1, "PropertyValueTypeError"},
                                                {nullptr, "PropertyValueTypeError"}};
  for (const auto& [value, message] : cases) {
    const Response response = patch(attributes({{"Vlan_4b0000", 1}, {"Boot_4b0000", value}}));
    EXPECT_EQ(response.status, 400) << value;
    EXPECT_EQ(message_of(response), std::string("Base.1.22.") + message);
  }
  for (const Json& value : {Json(4095), Json(-1), Json(uint64_t{1} << 63)})
    EXPECT_EQ(message_of(patch(attributes({{"Vlan_4b0000", value}}))), "Base.1.22.PropertyValueOutOfRange")
        << value;
  EXPECT_EQ(message_of(patch(attributes({{"Vlan_4b0000", "1"}}))), "Base.1.22.PropertyValueTypeError");
  for (const std::string& value : {std::string("a'b"), std::string(65, 'x'), std::string("a\0b", 3)})
    EXPECT_EQ(message_of(patch(attributes({{"Name_4b0000", value}}))), "Base.1.22.PropertyValueFormatError")
        << value;
  EXPECT_EQ(pending()["Vlan_4b0000"], 0);
  EXPECT_EQ(pending()["Boot_4b0000"], "None");
  EXPECT_EQ(pending()["Name_4b0000"], "port");
}

TEST_F(RedfishSettings, SayWhatWasLeftAloneBesideWhatWasSaved) {
  const Json json =
      json_of(patch({{"Attributes", {{"Name_4b0000", "uplink"}, {"Wheels", 4}}}, {"Id", "other"}}));
  EXPECT_EQ(json["Attributes"]["Name_4b0000"], "uplink");
  EXPECT_THAT(json["Attributes"]["Wheels@Message.ExtendedInfo"][0]["MessageId"],
              HasSubstr("PropertyUnknown"));
  EXPECT_THAT(json["Id@Message.ExtendedInfo"][0]["MessageId"], HasSubstr("PropertyNotWritable"));
  EXPECT_EQ(json["Id"], "Settings");
}

TEST_F(RedfishSettings, AreNoneWhereNothingCanBeSaved) {
  const std::string unsavable = std::string(70, 'x') + "_1";
  const std::pair<Json, const char*> cases[] = {
      {Json::object(), "EmptyJSON"},
      {{{"@odata.id", kSettingsPath}}, "NoOperation"},
      {{{"Name", "other"}}, "PropertyNotWritable"},
      {{{"Wheels", 4}}, "PropertyUnknown"},
      {attributes(Json::object()), "NoOperation"},
      {attributes({{"Wheels", "4"}}), "PropertyUnknown"},
      {attributes({{unsavable, "other"}}), "PropertyNotWritable"},
      {{{"Attributes", 1}}, "PropertyValueTypeError"},
      {{{"@Redfish.SettingsApplyTime", {{"ApplyTime", "Immediate"}}}, {"Attributes", {{"Name_4b0000", "x"}}}},
       "PropertyValueNotInList"},
  };
  for (const auto& [body, message] : cases) {
    const Response response = patch(body);
    EXPECT_EQ(response.status, 400) << body;
    EXPECT_EQ(message_of(response), std::string("Base.1.22.") + message) << body;
  }
}

TEST_F(RedfishSettings, AreSavedOnlyAsTheyWereSeen) {
  const std::string seen = header_of(get(kSettingsPath), "ETag");
  ASSERT_EQ(patch(attributes({{"Name_4b0000", "one"}}), Role::kOperator, {{"If-Match", seen}}).status, 200);
  const Response late = patch(attributes({{"Name_4b0000", "two"}}), Role::kOperator, {{"If-Match", seen}});
  EXPECT_EQ(late.status, 412);
  EXPECT_EQ(message_of(late), "Base.1.22.PreconditionFailed");
  EXPECT_EQ(pending()["Name_4b0000"], "one");
}

TEST_F(RedfishSettings, WaitWhileTheyAreBeingParsed) {
  get(kSettingsPath);
  ParsingMarker::set();
  EXPECT_EQ(patch(attributes({{"Name_4b0000", "one"}})).status, 503);
  ParsingMarker::remove();
  EXPECT_EQ(pending()["Name_4b0000"], "port");
}

TEST_F(RedfishSettings, HaveAttributesOfTheirOwnThoughTheirIdsAreAlike) {
  given_setting("Boot_4b0000", "PXE");
  given_setting("7", "1");
  const Json json = json_of(get("/redfish/v1/Systems/1/Bios"))["Attributes"];
  EXPECT_EQ(json.size(), 6u) << json;
  EXPECT_TRUE(json.contains("Boot_4b0000") && json.contains("Boot_4b0000_2") && json.contains("Setting_7"))
      << json;
}

TEST_F(RedfishSettings, AreDescribedByARegistry) {
  const Json registry =
      json_of(get("/redfish/v1/Registries/ZymdbBiosAttributeRegistry/ZymdbBiosAttributeRegistry.1.0.0"));
  std::map<std::string, Json> entries;
  for (const Json& entry : registry["RegistryEntries"]["Attributes"]) entries[entry["AttributeName"]] = entry;
  EXPECT_EQ(entries["Boot_4b0000"]["Type"], "Enumeration");
  EXPECT_EQ(entries["Boot_4b0000"]["Value"][1]["ValueName"], "PXE");
  EXPECT_EQ(entries["Vlan_4b0000"]["Type"], "Integer");
  EXPECT_EQ(entries["Vlan_4b0000"]["UpperBound"], 4094);
  EXPECT_EQ(entries["Name_4b0000"]["Type"], "String");
}

}  // namespace
}  // namespace zymdb::service
