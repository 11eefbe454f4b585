// The page for people at "/": its files, and the documents that it is drawn from.
//
//   /inventory.json  what `zymdb export --format json` prints
//   /parts.json      what each part is called and what of it deserves a look, in the order of /inventory.json
//   /fields.json     what the fields of each class are
//   /history.json    the newest changes
//   /events          a stream with an event for each new generation
#ifndef ZYMDB_SERVICE_PAGE_PAGE_H
#define ZYMDB_SERVICE_PAGE_PAGE_H

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "service/http/message.h"
#include "service/inventory/current.h"
#include "service/page/recent_history.h"

namespace zymdb::service {

class Page : public Handler {
 public:
  // Streams that are open at a time; who asks for more is told to come again.
  static constexpr int kMostStreams = 12;

  // `current` must outlive the page and its streams.
  explicit Page(Current& current);

  Response answer(const Request& request) override;

  // Whether whoever asks is answered without a login: the files are the same everywhere.
  static bool is_public(const Request& request);
  // Whether the answer may take seconds.
  static bool is_slow(const Request& request) { return request.path == "/history.json"; }

 private:
  // A content as it is sent, whoever asks for it.
  struct Content {
    std::string type;
    std::string etag;
    std::shared_ptr<const std::string> body;
    std::shared_ptr<const std::string> gzip;
  };
  // A document, kept until the inventory has another generation.
  struct Kept {
    std::mutex mutex;
    std::optional<uint64_t> generation;
    std::shared_ptr<const Content> content;
  };
  using Writer = std::function<std::string(const documents::Document&)>;

  // Made when somebody first asks for it.
  const Content& fields();

  static Content document_content(std::string json, std::optional<uint64_t> generation);

  Response refuse_unreadable(const Request& request, const DatabaseError& error) override;
  Response answer_data(const Request& request);
  Response answer_document(const Request& request, Kept& kept, const Writer& write);
  Response answer_events();
  static Response answer_content(const Request& request, const Content& content);

  Current& current_;
  RecentHistory history_;
  std::map<std::string, Content, std::less<>> files_;
  std::once_flag fields_made_;
  Content fields_;
  Kept inventory_, parts_, changes_;
  std::shared_ptr<std::atomic<int>> streams_ = std::make_shared<std::atomic<int>>(0);
};

}  // namespace zymdb::service

#endif
