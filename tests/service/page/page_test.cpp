// What the page's handler answers.
#include "service/page/page.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <thread>

#include "common/client_extensions.h"
#include "common/client_objects.h"
#include "documents/document_json.h"
#include "records/pci.h"
#include "service/http/compression.h"
#include "service/http/kept_log.h"
#include "service/page/assets.h"
#include "service/page/child_process.h"
#include "support/inventory.h"

namespace zymdb::service {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;

constexpr size_t kMostBytesOfAll = 100 << 10;

class PageTest : public InventoryTest {
 protected:
  static Request request(const std::string& path, Fields headers = {}) {
    return {.path = path, .headers = std::move(headers), .caller = {"reader", Role::kReadOnly, ""}};
  }
  Response get(const std::string& path, Fields headers = {}) {
    return page_.answer_or_refuse(request(path, std::move(headers)), log_.log());
  }
  json get_json(const std::string& path) {
    const Response response = get(path);
    EXPECT_EQ(response.status, 200) << path;
    return json::parse(*response.body);
  }
  static std::string header(const Response& response, const std::string& name) {
    const auto found = std::ranges::find(response.headers, name, [](const auto& each) { return each.first; });
    return found == response.headers.end() ? "" : found->second;
  }

  static void given_modules() {
    given("Memory", {{"SlotNo", 1},
                     {"MemSize", 65536},
                     {"MemType", 26},
                     {"DevLocator", "A1"},
                     {"PartNo", "M1"},
                     {"SerialNo", "S1"}});
    given("Memory", {{"SlotNo", 2}, {"MemSize", 0}, {"DevLocator", "A2"}});
  }
  // One a transaction.
  void given_more_modules(size_t count) {
    for (size_t i = 0; i < count; ++i) {
      ++last_module_;
      given("Memory", {{"SlotNo", last_module_},
                       {"MemSize", 1024},
                       {"MemType", 26},
                       {"SerialNo", "S" + std::to_string(last_module_)}});
    }
  }
  static void given_port(const char* name, int status) {
    static int number = 0;
    const int key = 0x10000 + ++number;
    given("PCIs", {{"FunKey", key}, {"SegNo", 0}, {"BusNo", 1}, {"DeviceNo", 0}, {"FunctionNo", number}});
    given("PCINetwork", {{"PCIFuncKey", key}, {"NumberofPhysicalPorts", 1}});
    given("PCIPhysicalPort", {{"PCIFuncKey", key}, {"Idx", 0}, {"InterfaceName", name}});
    given("PCIPhysicalPortStat", {{"PCIFuncKey", key}, {"Idx", 0}, {"LinkStatus", status}});
  }

  Current current_{records::kPciIdsFile};
  Page page_{current_};
  KeptLog log_;
  int last_module_ = 10;
};

TEST_F(PageTest, ServesItsFilesToWhoeverAsks) {
  for (const char* path : {"/", "/app.js", "/page.css", "/icon.svg"}) {
    const Request anonymous{.path = path};
    EXPECT_TRUE(Page::is_public(anonymous)) << path;
    const Response response = page_.answer(anonymous);
    EXPECT_EQ(response.status, 200) << path;
    ASSERT_NE(response.gzip, nullptr) << path;
    EXPECT_THAT(gunzip(*response.gzip), Not(IsEmpty())) << path;
  }
  EXPECT_EQ(header(get("/"), "Content-Type"), "text/html; charset=utf-8");
  EXPECT_EQ(header(get("/app.js"), "Content-Type"), "text/javascript; charset=utf-8");
  EXPECT_EQ(header(get("/page.css"), "Content-Type"), "text/css; charset=utf-8");
  EXPECT_EQ(header(get("/icon.svg"), "Content-Type"), "image/svg+xml");
}

TEST_F(PageTest, IsSmallAsAWhole) {
  size_t size = 0;
  for (const Asset& asset : page_assets()) size += asset.size;
  EXPECT_LE(size, kMostBytesOfAll);
  EXPECT_GT(size, 1000U);
}

TEST_F(PageTest, LetsNothingRunThatItDidNotBring) {
  for (const char* path : {"/", "/app.js", "/inventory.json", "/nowhere"}) {
    const Response response = get(path);
    EXPECT_EQ(header(response, "Content-Security-Policy"),
              "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
              "base-uri 'none'; form-action 'self'; frame-ancestors 'none'")
        << path;
    EXPECT_EQ(header(response, "Referrer-Policy"), "no-referrer") << path;
    EXPECT_EQ(header(response, "X-Content-Type-Options"), "nosniff") << path;
  }
}

TEST_F(PageTest, HasNoScriptAndNoStyleInLine) {
  const std::string html = gunzip(*get("/").gzip);
  EXPECT_THAT(html, Not(HasSubstr("<style")));
  EXPECT_THAT(html, Not(HasSubstr("style=")));
  EXPECT_THAT(html, Not(HasSubstr(" onload=")));
  EXPECT_THAT(html, HasSubstr(R"(<script type="module" src="app.js"></script>)"));
}

TEST_F(PageTest, MakesNoMarkupOfTexts) {
  for (const Asset& asset : page_assets()) {
    const std::string path = asset.path, text = gunzip(*get(path).gzip);
    for (const char* way : {"innerHTML", "outerHTML", "insertAdjacentHTML", "document.write", "DOMParser",
                            "eval(", "new Function"})
      EXPECT_THAT(text, Not(HasSubstr(way))) << path;
  }
}

TEST_F(PageTest, SendsNothingAgainThatIsKnown) {
  given_modules();
  for (const char* path : {"/", "/fields.json", "/inventory.json", "/parts.json", "/history.json"}) {
    const std::string tag = header(get(path), "ETag");
    EXPECT_THAT(tag, AllOf(StartsWith("\""), SizeIs(testing::Gt(2U)))) << path;
    const Response again = get(path, {{"if-none-match", "W/" + tag}});
    EXPECT_EQ(again.status, 304) << path;
    EXPECT_EQ(again.body, nullptr) << path;
    EXPECT_EQ(get(path, {{"If-None-Match", "\"another\""}}).status, 200) << path;
  }
}

TEST_F(PageTest, SendsWhatHasChanged) {
  given_modules();
  const std::string tag = header(get("/inventory.json"), "ETag");
  given("Memory", {{"SlotNo", 3}});
  EXPECT_EQ(get("/inventory.json", {{"If-None-Match", tag}}).status, 200);
  EXPECT_THAT(get_json("/inventory.json")["memory"], SizeIs(3));
}

TEST_F(PageTest, ShowsTheInventoryToThoseWhoMayReadIt) {
  for (const char* path : {"/inventory.json", "/parts.json", "/fields.json", "/history.json", "/events"}) {
    EXPECT_EQ(page_.answer({.path = path}).status, 401) << path;
    EXPECT_EQ(page_.answer({.path = path, .caller = {"guest", Role::kNone, ""}}).status, 403) << path;
    // Without a name where the service lets everybody read.
    EXPECT_EQ(page_.answer({.path = path, .caller = {"", Role::kReadOnly, ""}}).status, 200) << path;
    EXPECT_FALSE(Page::is_public({.path = path})) << path;
  }
}

TEST_F(PageTest, AnswersNothingElse) {
  EXPECT_EQ(get("/nowhere").status, 404);
  EXPECT_EQ(page_.answer({.path = "/nowhere"}).status, 401);
  EXPECT_EQ(get("/../etc/passwd").status, 404);
  const Response response = page_.answer({.method = Method::kPost, .path = "/"});
  EXPECT_EQ(response.status, 405);
  EXPECT_EQ(header(response, "Allow"), "GET, HEAD");
}

TEST_F(PageTest, TellsTheInventoryAsAnExportDoes) {
  given_modules();
  EXPECT_EQ(*get("/inventory.json").body, documents::to_json(*current_.get()));
}

TEST_F(PageTest, TellsOfEveryFieldWhatItIs) {
  const json classes = get_json("/fields.json")["classes"];
  ASSERT_EQ(classes.size(), current_.types().size());
  for (size_t i = 0; i < classes.size(); ++i) {
    const auto& type = current_.types()[i];
    EXPECT_EQ(classes[i]["name"], type.name);
    ASSERT_EQ(classes[i]["fields"].size(), type.fields.size()) << type.name;
    for (size_t j = 0; j < type.fields.size(); ++j) {
      const json& told = classes[i]["fields"][j];
      EXPECT_EQ(told["key"], type.fields[j].key);
      EXPECT_EQ(told["heading"], type.fields[j].heading);
      EXPECT_EQ(told["meaning"], type.fields[j].meaning);
      EXPECT_EQ(told["unit"], type.fields[j].unit);
      EXPECT_EQ(told["hex_digits"], type.fields[j].hex_digits);
      EXPECT_EQ(told["is_shown"], type.fields[j].shown == records::Shown::kByDefault);
    }
  }
}

TEST_F(PageTest, NamesEveryPartAndWhatOfItDeservesALook) {
  given_modules();
  given_port("eth0", 1);
  given_port("eth1", 2);
  const json parts = get_json("/parts.json"), inventory = get_json("/inventory.json");
  EXPECT_EQ(parts["generation"], inventory["generation"]);
  for (const auto& [name, list] : parts["classes"].items())
    EXPECT_EQ(list.size(), inventory[name].size()) << name;
  EXPECT_EQ(parts["classes"]["memory"][0],
            json({{"name", "1 A1"}, {"place", "1 A1"}, {"model", "64 GiB DDR4 M1"}}));
  EXPECT_EQ(parts["classes"]["memory"][1]["vacant"], true);
  ASSERT_THAT(parts["classes"]["ports"], SizeIs(2));
  EXPECT_FALSE(parts["classes"]["ports"][0].contains("attention"));
  EXPECT_EQ(parts["classes"]["ports"][1]["attention"], json({{"Link", "absent"}}));
}

TEST_F(PageTest, SaysWhyTheInventoryCannotBeRead) {
  lose_database();
  for (const char* path : {"/inventory.json", "/parts.json", "/history.json"}) {
    const Response response = get(path);
    EXPECT_EQ(response.status, 503) << path;
    EXPECT_EQ(header(response, "Retry-After"), "5") << path;
    EXPECT_THAT(json::parse(*response.body)["error"].get<std::string>(), Not(IsEmpty())) << path;
    EXPECT_NE(header(response, "Content-Security-Policy"), "") << path;
  }
  EXPECT_THAT(log_.lines(), AllOf(SizeIs(3), Each(StartsWith("cannot read the inventory: "))));
  EXPECT_EQ(get("/").status, 200);
}

TEST_F(PageTest, TellsTheNewestChangesFirst) {
  given_modules();
  given("Memory",
        {{"SlotNo", 3}, {"MemSize", 1024}, {"MemType", 26}, {"DevLocator", "A3"}, {"SerialNo", "S3"}});
  json history = get_json("/history.json");
  EXPECT_EQ(history["generation"], get_json("/inventory.json")["generation"]);
  ASSERT_FALSE(history["changes"].empty());
  EXPECT_EQ(history["changes"][0]["change"], "added");
  EXPECT_EQ(history["changes"][0]["class"], "memory");
  EXPECT_EQ(history["changes"][0]["place"], "3 A3");
  EXPECT_EQ(history["changes"].back()["change"], "baseline");

  const size_t before = history["changes"].size();
  given("Memory",
        {{"SlotNo", 4}, {"MemSize", 1024}, {"MemType", 26}, {"DevLocator", "A4"}, {"SerialNo", "S4"}});
  history = get_json("/history.json");
  EXPECT_EQ(history["changes"].size(), before + 1);
  EXPECT_EQ(history["changes"][0]["place"], "4 A4");
}

TEST_F(PageTest, GoesBackOnlySoFar) {
  given_modules();
  given_more_modules(80);
  EXPECT_THAT(get_json("/history.json")["changes"], SizeIs(RecentHistory::kMostEntries));
  // The same after a time without a look, without a gap in between.
  given_more_modules(RecentHistory::kMostEntries + 20);
  const json changes = get_json("/history.json")["changes"];
  EXPECT_THAT(changes, SizeIs(RecentHistory::kMostEntries));
  EXPECT_EQ(changes[0]["place"], std::to_string(last_module_));
}

TEST_F(PageTest, KeepsOnlySoManyChanges) {
  given_modules();
  for (size_t i = 0; i < RecentHistory::kMostChanges + 60; i += 30) {
    given_more_modules(30);
    EXPECT_EQ(get_json("/history.json")["changes"].size(), std::min(i + 30 + 1, RecentHistory::kMostChanges));
  }
  EXPECT_EQ(get_json("/history.json")["changes"][0]["place"], std::to_string(last_module_));
}

TEST_F(PageTest, LeavesTheInventoryAsItIsWhileItLooksBack) {
  given_modules();
  given("Memory", {{"SlotNo", 3}});
  const std::string before = rows("Memory", {"SlotNo"});
  get("/history.json");
  EXPECT_EQ(rows("Memory", {"SlotNo"}), before);
  given("Memory", {{"SlotNo", 4}});
  EXPECT_THAT(get_json("/inventory.json")["memory"], SizeIs(4));
}

TEST_F(PageTest, LooksBackWhileOthersReadAndWrite) {
  given_modules();
  std::atomic<bool> is_over = false;
  std::mutex turn;
  std::vector<std::thread> others;
  for (int i = 0; i < 2; ++i) {
    others.emplace_back([&] {
      while (!is_over) {
        // With AddressSanitizer a child cannot allocate where another thread was allocating at the fork.
#ifdef __SANITIZE_ADDRESS__
        const std::lock_guard standing_still(turn);
#endif
        EXPECT_EQ(get("/inventory.json").status, 200);
      }
    });
  }
  for (int i = 0; i < 20; ++i) {
    given(
        "Memory",
        {{"SlotNo", 10 + i}, {"MemSize", 1024}, {"MemType", 26}, {"SerialNo", "S" + std::to_string(10 + i)}});
    const std::lock_guard looking_back(turn);
    EXPECT_EQ(get("/history.json").status, 200);
  }
  is_over = true;
  for (auto& other : others) other.join();
  EXPECT_EQ(get_json("/history.json")["changes"][0]["place"], "29");
}

TEST_F(PageTest, TellsOfEveryNewGeneration) {
  const Response response = get("/events");
  ASSERT_NE(response.stream, nullptr);
  EXPECT_EQ(header(response, "Content-Type"), "text/event-stream");
  const auto event = [] {
    return "event: generation\ndata: {\"generation\":" + std::to_string(*inventory_generation()) + "}\n\n";
  };
  EXPECT_EQ(response.stream->take(), event());
  EXPECT_EQ(response.stream->take(), "");
  given_modules();
  EXPECT_EQ(response.stream->take(), event());
  EXPECT_EQ(response.stream->take(), "");
  EXPECT_FALSE(response.stream->is_over());
}

TEST_F(PageTest, HasRoomForSoManyListenersAndNoMore) {
  std::vector<Response> listeners(Page::kMostStreams);
  for (Response& each : listeners) {
    each = get("/events");
    EXPECT_EQ(each.status, 200);
  }
  const Response refused = get("/events");
  EXPECT_EQ(refused.status, 503);
  EXPECT_EQ(header(refused, "Retry-After"), "5");
  listeners.pop_back();
  EXPECT_EQ(get("/events").status, 200);
}

TEST(ChildProcessTest, TellsWhatItsWorkReturned) {
  const std::string much(1 << 20, 'x');
  EXPECT_EQ(output_of_child([&] { return much; }, std::chrono::seconds(20)), much);
}

TEST(ChildProcessTest, TellsWhyItsWorkFailed) {
  try {
    output_of_child([]() -> std::string { throw DatabaseError("the disk is gone"); },
                    std::chrono::seconds(20));
    FAIL();
  } catch (const DatabaseError& error) {
    EXPECT_STREQ(error.what(), "the disk is gone");
  }
}

TEST(ChildProcessTest, EndsWorkThatTakesTooLong) {
  const auto begun = std::chrono::steady_clock::now();
  EXPECT_THROW(output_of_child(
                   [] {
                     std::this_thread::sleep_for(std::chrono::minutes(5));
                     return std::string();
                   },
                   std::chrono::milliseconds(100)),
               DatabaseError);
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(30));
}

TEST(ChildProcessTest, OutlivesWorkThatEndsItsProcess) {
  EXPECT_THROW(output_of_child(
                   []() -> std::string {
                     raise(SIGKILL);
                     return "";
                   },
                   std::chrono::seconds(20)),
               DatabaseError);
}

}  // namespace
}  // namespace zymdb::service
