#include "service/page/page.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <utility>

#include "common/client_objects.h"
#include "documents/document_json.h"
#include "service/http/entity_tag.h"
#include "service/page/assets.h"
#include "service/page/generation_stream.h"
#include "service/page/page_documents.h"

namespace zymdb::service {
namespace {

constexpr char kJson[] = "application/json";

// Everything comes from this server, nothing is written in line, and nobody puts the page into theirs.
constexpr std::pair<const char*, const char*> kPolicies[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; base-uri "
     "'none'; "
     "form-action 'self'; frame-ancestors 'none'"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
};

Response with_policies(Response response) {
  for (const auto& [name, value] : kPolicies) response.headers.emplace_back(name, value);
  return response;
}

Response refusal(int status, const std::string& reason) {
  return Response::of(status, kJson, error_json(reason));
}

std::string in_digits(unsigned long sum) {
  std::array<char, 9> digits{};
  std::snprintf(digits.data(), digits.size(), "%08lx", sum);
  return digits.data();
}

std::string checksum(std::string_view content) {
  const auto sum =
      crc32(0, reinterpret_cast<const unsigned char*>(content.data()), static_cast<uInt>(content.size()));
  return in_digits(sum);
}

// Of the content: gzip has it behind the content, the lowest byte first, before the size.
std::string checksum(const Asset& asset) {
  unsigned long sum = 0;
  for (size_t i = 0; i < 4; ++i) sum = sum << 8 | asset.gzip[asset.size - 5 - i];
  return in_digits(sum);
}

}  // namespace

Page::Page(Current& current) : current_(current), history_(current.types()) {
  for (const Asset& asset : page_assets())
    files_[asset.path] = {
        asset.type, '"' + checksum(asset) + '"', nullptr,
        std::make_shared<const std::string>(reinterpret_cast<const char*>(asset.gzip), asset.size)};
}

const Page::Content& Page::fields() {
  std::call_once(fields_made_,
                 [this] { fields_ = document_content(fields_json(current_.types()), std::nullopt); });
  return fields_;
}

// The checksum tells documents of one generation of two inventories apart.
Page::Content Page::document_content(std::string json, std::optional<uint64_t> generation) {
  std::string etag = '"' + (generation ? std::to_string(*generation) + "-" : "") + checksum(json) + '"';
  return {kJson, std::move(etag), std::make_shared<const std::string>(std::move(json)), nullptr};
}

bool Page::is_public(const Request& request) {
  return std::ranges::any_of(page_assets(), [&](const Asset& asset) { return request.path == asset.path; });
}

Response Page::answer(const Request& request) {
  if (!request.is_read()) {
    Response response = refusal(405, "only GET is answered here");
    response.headers.emplace_back("Allow", "GET, HEAD");
    return with_policies(std::move(response));
  }
  const auto file = files_.find(request.path);
  return with_policies(file != files_.end() ? answer_content(request, file->second) : answer_data(request));
}

Response Page::answer_data(const Request& request) {
  if (!request.caller.may(Role::kReadOnly))
    return request.caller.user.empty() ? refusal(401, "log in first")
                                       : refusal(403, "this account may not read the inventory");
  if (request.path == "/events") return answer_events();
  if (request.path == "/fields.json") return answer_content(request, fields());
  if (request.path == "/inventory.json") return answer_document(request, inventory_, &documents::to_json);
  if (request.path == "/parts.json") return answer_document(request, parts_, &parts_json);
  if (request.path != "/history.json") return refusal(404, "there is no such page");
  return answer_document(request, changes_, [this](const auto& document) {
    return history_json(history_.newest(document.generation), document.generation);
  });
}

Response Page::answer_document(const Request& request, Kept& kept, const Writer& write) {
  const auto document = current_.get();
  std::shared_ptr<const Content> content;
  {
    // Who asks for it meanwhile waits, and shares it.
    const std::lock_guard lock(kept.mutex);
    if (kept.content == nullptr || !document->generation || kept.generation != document->generation) {
      kept.content =
          std::make_shared<const Content>(document_content(write(*document), document->generation));
      kept.generation = document->generation;
    }
    content = kept.content;
  }
  return answer_content(request, *content);
}

Response Page::refuse_unreadable(const Request&, const DatabaseError& error) {
  return with_policies(refusal(503, error.what()));
}

Response Page::answer_events() {
  if (streams_->fetch_add(1) >= kMostStreams) {
    streams_->fetch_sub(1);
    return with_retry(refusal(503, "too many others are listening"));
  }
  // The stream counts for as long as it lives.
  const std::shared_ptr<void> place(nullptr, [streams = streams_](void*) { streams->fetch_sub(1); });
  Response response;
  response.headers = {{"Content-Type", "text/event-stream"}, {"Cache-Control", "no-store"}};
  response.stream = std::make_shared<GenerationStream>(place);
  return response;
}

Response Page::answer_content(const Request& request, const Content& content) {
  Response response;
  // Kept by browsers, and asked for again each time: a new version of the program is seen at once.
  response.headers = {{"ETag", content.etag}, {"Cache-Control", "no-cache"}};
  if (is_known(request, content.etag)) {
    response.status = 304;
    return response;
  }
  response.headers.emplace_back("Content-Type", content.type);
  response.body = content.body;
  response.gzip = content.gzip;
  return response;
}

}  // namespace zymdb::service
