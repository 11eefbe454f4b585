#include "service/redfish/redfish.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <new>
#include <utility>

#include "common/client_objects.h"
#include "service/http/entity_tag.h"
#include "service/redfish/cache.h"
#include "service/redfish/destinations.h"
#include "service/redfish/errors.h"
#include "service/redfish/events.h"
#include "service/redfish/headers.h"
#include "service/redfish/live.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/query.h"
#include "service/redfish/resources/resources.h"
#include "service/redfish/writes.h"

namespace zymdb::service {

using namespace redfish;

namespace {

constexpr char kReading[] = "GET, HEAD";
constexpr char kChanging[] = "GET, HEAD, PATCH";
constexpr char kMetadataType[] = "application/xml; charset=utf-8";
constexpr char kEventsType[] = "text/event-stream";

// A document that whoever is no client yet may read, and that no schema describes.
struct Document {
  std::string_view path;
  const char* type;
  std::string (*make)();
};

std::string versions() {
  return R"({"v1":"/redfish/v1/"})";
}

std::string service_document() {
  Json links = Json::array();
  const auto add = [&](const char* name, const std::string& path) {
    links.push_back({{"name", name}, {"kind", "Singleton"}, {"url", path}});
  };
  add("Service", kRoot + "/");
  add("Systems", kSystems);
  add("Chassis", kAllChassis);
  add("Managers", kManagers);
  add("UpdateService", kUpdateService);
  add("SessionService", kSessionService);
  add("AccountService", kAccountService);
  add("EventService", kEventService);
  add("Registries", kRegistries);
  add("JsonSchemas", kJsonSchemas);
  add("Sessions", kSessions);
  return redfish::text_of(Json{{"@odata.context", kRoot + "/$metadata"}, {"value", std::move(links)}});
}

constexpr Document kDocuments[] = {
    {"/redfish", kJsonType, versions},
    {"/redfish/v1/odata", kJsonType, service_document},
    {"/redfish/v1/$metadata", kMetadataType, metadata},
};

const Document* document_at(std::string_view path) {
  for (const Document& document : kDocuments) {
    if (document.path == path) return &document;
  }
  return nullptr;
}

// Paths are told without the slash at their ends; what is sent to a collection's members is sent to it.
std::string path_of(const Request& request) {
  std::string path = request.path;
  if (path.size() > 1 && path.back() == '/') path.pop_back();
  constexpr std::string_view kMembers = "/Members";
  if (request.method == Method::kPost && path.ends_with(kMembers)) path.resize(path.size() - kMembers.size());
  return path;
}

bool has_options(const Request& request) {
  return std::ranges::any_of(
      request.query, [](const auto& each) { return each.first.starts_with('$') || each.first == "only"; });
}

// FNV-1a: of the same content the same, wherever and whenever.
std::string etag_of(std::string_view text) {
  uint64_t hash = 0xcbf29ce484222325u;
  for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001b3u;
  char tag[24];
  std::snprintf(tag, sizeof tag, "\"%016llx\"", static_cast<unsigned long long>(hash));
  return tag;
}

void add_common_headers(Response& response, const char* allowed) {
  response.headers.emplace_back("OData-Version", "4.0");
  response.headers.emplace_back("Cache-Control", "no-cache");
  response.headers.emplace_back("Allow", allowed);
}

Response with_allowed(Response response, const char* allowed) {
  response.headers.emplace_back("Allow", allowed);
  return response;
}

Response no_content(const char* allowed) {
  Response response{.status = 204};
  add_common_headers(response, allowed);
  return response;
}

Response answer_document(const Document& document, const Request& request) {
  if (!request.is_read()) return with_allowed(error_response(405), kReading);
  if (!accepts(request, std::string_view(document.type).substr(0, std::string_view(document.type).find(';'))))
    return error_response(406);
  Response response = Response::of(200, document.type, document.make());
  add_common_headers(response, kReading);
  return response;
}

Response not_found(const Request& request) {
  return error_response(404, request.path.substr(0, 256));
}

Response refusal_of(const QueryError& error) {
  return error_with(error.status, {error.message});
}

bool is_method_in(Method method, std::string_view allowed) {
  switch (method) {
    case Method::kGet:
    case Method::kHead:
      return allowed.find("GET") != std::string_view::npos;
    case Method::kPost:
      return allowed.find("POST") != std::string_view::npos;
    case Method::kPatch:
      return allowed.find("PATCH") != std::string_view::npos;
    case Method::kDelete:
      return allowed.find("DELETE") != std::string_view::npos;
    default:
      return false;
  }
}

}  // namespace

class Redfish::Service {
 public:
  Service(Current& current, Accounts& accounts, const RedfishOptions& options)
      : current_(current),
        accounts_(accounts),
        options_(options),
        events_([this] { return view()->tree; },
                [&accounts](const std::string& session) { return accounts.session(session).has_value(); },
                options.delivery),
        live_(accounts, events_) {}

  Response answer(const Request& request) {
    const std::string path = path_of(request);
    if (request.method == Method::kOther) return error_response(501);
    const auto version = request.header("OData-Version");
    if (version && *version != "4.0") return error_with(412, {{"HeaderInvalid", {"OData-Version"}}});
    if (const Document* const document = document_at(path)) return answer_document(*document, request);
    if (!is_public(request) && !request.caller.may(Role::kReadOnly)) return error_response(401);
    if (!request.is_read() && has_options(request))
      return error_with(400, {{"QueryNotSupportedOnOperation"}});
    if (path == kEventStream) return answer_stream(request);
    if (path == kTestEvent) return answer_test_event(request);
    if (Live::has(path)) return answer_live(path, request);
    return answer_resource(path, request);
  }

 private:
  // What one document is answered from.
  struct View {
    View(Current::DocumentPtr of, size_t most_bytes)
        : document(std::move(of)), tree(make_tree(document)), cache(most_bytes) {}

    const Current::DocumentPtr document;
    const Events::TreePtr tree;
    Cache cache;
  };
  using ViewPtr = std::shared_ptr<View>;

  ViewPtr view() {
    auto document = current_.get();
    const std::lock_guard lock(mutex_);
    if (view_ == nullptr || view_->document != document)
      view_ = std::make_shared<View>(std::move(document), options_.most_kept_bytes);
    return view_;
  }

  Response answer_resource(const std::string& path, const Request& request) {
    const ViewPtr now = view();
    const Node* const node = now->tree->find(path);
    if (node == nullptr) return not_found(request);
    const char* const allowed = path == kBiosSettings && !options_.is_read_only ? kChanging : kReading;
    if (!is_method_in(request.method, allowed)) return with_allowed(error_response(405), allowed);
    if (!request.is_read()) return patch_settings(*now, request);
    Query query;
    if (const auto error = parse_query(request.query, query)) return refusal_of(*error);
    if (!node->is_collection() && (query.only || query.top || query.skip))
      return error_with(400, {{"QueryNotSupportedOnResource"}});
    return answer_read(request, *node->schema, allowed, body_of(*now, path, *node, query, request.caller));
  }

  // Paths hold no line ends: what follows one is the query.
  Body body_of(View& view, const std::string& path, const Node& node, const Query& query,
               const Caller& caller) {
    const std::string key = path + "\n" + query.key();
    if (const auto kept = view.cache.find(key)) return *kept;
    bool is_live = false;
    const Expander::Find find = [&](const std::string& linked) {
      return find_resource(view, linked, caller, is_live);
    };
    const Body body = written(view.tree->make(path, node), query, find);
    if (!is_live) view.cache.keep(key, body);
    return body;
  }

  // As a client would be given it.
  Json find_resource(const View& view, const std::string& path, const Caller& caller, bool& is_live) const {
    if (Live::has(path)) {
      is_live = true;
      return find_live(path, caller);
    }
    const Node* const node = view.tree->find(path);
    return node != nullptr ? with_etag(view.tree->make(path, *node)) : Json();
  }

  static Json with_etag(Json resource) {
    resource["@odata.etag"] = etag_of(redfish::text_of(resource));
    return resource;
  }

  static Body written(Json resource, const Query& query, const Expander::Find& find) {
    if (query.only && resource["Members"].size() == 1) {
      Json member = find(resource["Members"][0]["@odata.id"].get<std::string>());
      if (!member.is_null()) resource = std::move(member);
    }
    resource.erase("@odata.etag");
    take_page(resource, query);
    if (query.expand != Expansion::kNone) Expander(query.expand, find).expand(resource, query.levels);
    resource = selected(resource, query);
    std::string etag = etag_of(redfish::text_of(resource));
    resource["@odata.etag"] = etag;
    return {std::make_shared<const std::string>(redfish::text_of(resource)), std::move(etag)};
  }

  static Response answer_read(const Request& request, const Schema& schema, const char* allowed,
                              const Body& body) {
    if (!accepts(request, "application/json")) return with_allowed(error_response(406), allowed);
    Response response;
    add_common_headers(response, allowed);
    response.headers.emplace_back("ETag", body.etag);
    if (is_known(request, body.etag)) {
      response.status = 304;
      return response;
    }
    response.headers.emplace_back("Content-Type", kJsonType);
    response.headers.emplace_back("Link", "<" + publication_of(schema) + ">; rel=describedby");
    response.body = body.text;
    return response;
  }

  Response answer_live(const std::string& path, const Request& request) {
    auto found = live_.find(path, request.caller);
    if (!found) return not_found(request);
    if (!is_method_in(request.method, found->allowed))
      return with_allowed(error_response(405), found->allowed);
    if (request.method == Method::kPost)
      return path == kSessions ? log_in(accounts_, request) : subscribe(request, found->allowed);
    if (found->is_of_others) return with_allowed(error_response(403), found->allowed);
    if (request.method == Method::kDelete) return end(path, request, *found);
    if (request.method == Method::kPatch) return change_subscription(path, request, *found);
    Query query;
    if (const auto error = parse_query(request.query, query)) return refusal_of(*error);
    if (!found->json.contains("Members") && (query.only || query.top || query.skip))
      return error_with(400, {{"QueryNotSupportedOnResource"}});
    // Nothing here leads into the inventory.
    const Expander::Find find = [&](const std::string& linked) {
      return Live::has(linked) ? find_live(linked, request.caller) : Json();
    };
    return answer_read(request, *found->schema, found->allowed, written(std::move(found->json), query, find));
  }

  Json find_live(const std::string& path, const Caller& caller) const {
    auto found = live_.find(path, caller);
    return found && !found->is_of_others ? with_etag(std::move(found->json)) : Json();
  }

  Response subscribe(const Request& request, const char* allowed) {
    if (!request.caller.may(Role::kOperator)) return with_allowed(error_response(403), allowed);
    const ParsedBody body = parse_body(request);
    if (body.refusal) return with_allowed(*body.refusal, allowed);
    WantedDestination wanted = wanted_destination(body.object);
    if (!wanted.objections.empty()) return with_allowed(error_with(400, wanted.objections), allowed);
    const std::string id = events_.subscribe(request.caller, std::move(wanted.destination));
    if (id.empty()) return with_allowed(error_with(507, {{"CreateLimitReachedForResource"}}), allowed);
    const std::string path = kSubscriptions + "/" + id;
    const auto made = live_.find(path, request.caller);
    // Somebody else has ended it since.
    if (!made) return not_found(request);
    Response response = changed(*made, {});
    response.status = 201;
    response.headers.emplace_back("Location", path);
    return response;
  }

  Response change_subscription(const std::string& path, const Request& request, const LiveResource& before) {
    const ParsedBody body = parse_body(request);
    if (body.refusal) return with_allowed(*body.refusal, before.allowed);
    if (!is_as_wanted(request, before)) return with_allowed(error_response(412), before.allowed);
    const WantedChange wanted = wanted_change(body.object);
    if (!wanted.objections.empty()) return with_allowed(error_with(400, wanted.objections), before.allowed);
    if (!wanted.change.context && !wanted.change.after_retries) {
      const std::vector<Message> nothing{{"NoOperation"}};
      return with_allowed(error_with(400, wanted.unchanged.empty() ? nothing : wanted.unchanged),
                          before.allowed);
    }
    if (!events_.change(path.substr(path.rfind('/') + 1), wanted.change)) return not_found(request);
    const auto now = live_.find(path, request.caller);
    return now ? changed(*now, wanted.unchanged) : not_found(request);
  }

  // A resource as it is since the request, with what was left alone beside it.
  static Response changed(const Json& resource, const Schema& schema, const char* allowed,
                          const std::vector<Message>& unchanged) {
    Json json = with_etag(resource);
    const std::string etag = json["@odata.etag"].get<std::string>();
    for (const Message& message : unchanged) {
      // "#/Attributes/Name", or "#/Name".
      std::string_view name = std::string_view(message.property).substr(2);
      Json* of = &json;
      if (constexpr std::string_view kAttributes = "Attributes/"; name.starts_with(kAttributes)) {
        name.remove_prefix(kAttributes.size());
        of = &json["Attributes"];
      }
      (*of)[std::string(name) + "@Message.ExtendedInfo"].push_back(json_of(message));
    }
    Response response = Response::of(200, kJsonType, redfish::text_of(json));
    add_common_headers(response, allowed);
    response.headers.emplace_back("ETag", etag);
    response.headers.emplace_back("Link", "<" + publication_of(schema) + ">; rel=describedby");
    return response;
  }
  static Response changed(const LiveResource& resource, const std::vector<Message>& unchanged) {
    return changed(resource.json, *resource.schema, resource.allowed, unchanged);
  }

  static bool is_as_wanted(const Request& request, const LiveResource& resource) {
    const auto wanted = request.header("If-Match");
    return !wanted || names_tag(*wanted, written(resource.json, {}, {}).etag);
  }

  Response end(const std::string& path, const Request& request, const LiveResource& resource) {
    if (!is_as_wanted(request, resource)) return error_response(412);
    const std::string id = path.substr(path.rfind('/') + 1);
    const bool is_ended = path.starts_with(kSessions + "/") ? accounts_.end_session(id) : events_.end(id);
    return is_ended ? no_content(resource.allowed) : not_found(request);
  }

  Response answer_stream(const Request& request) {
    if (!request.is_read()) return with_allowed(error_response(405), kReading);
    if (!accepts(request, kEventsType)) return with_allowed(error_response(406), kReading);
    Response response{.status = 200, .headers = {{"Content-Type", kEventsType}}};
    add_common_headers(response, kReading);
    if (request.method == Method::kHead) return response;
    response.stream = events_.subscribe(request.caller);
    if (response.stream == nullptr) return error_with(503, {{"EventSubscriptionLimitExceeded"}});
    return response;
  }

  Response answer_test_event(const Request& request) {
    constexpr char kPosting[] = "POST";
    if (request.method != Method::kPost) return with_allowed(error_response(405), kPosting);
    if (!request.caller.may(Role::kAdministrator)) return with_allowed(error_response(403), kPosting);
    events_.send_test_event();
    return no_content(kPosting);
  }

  Response patch_settings(View& before, const Request& request) {
    if (!request.caller.may(Role::kOperator)) return with_allowed(error_response(403), kChanging);
    const ParsedBody body = parse_body(request);
    if (body.refusal) return with_allowed(*body.refusal, kChanging);
    const auto wanted = request.header("If-Match");
    const Node& node = *before.tree->find(kBiosSettings);
    if (wanted && !names_tag(*wanted, body_of(before, kBiosSettings, node, {}, request.caller).etag))
      return with_allowed(error_response(412), kChanging);
    const SettingsOutcome outcome =
        save_settings(before.tree->machine(), body.object, options_.may_create_properties);
    if (outcome.refusal) return with_allowed(*outcome.refusal, kChanging);
    return saved_settings(outcome.unchanged);
  }

  Response saved_settings(const std::vector<Message>& unchanged) {
    const ViewPtr now = view();
    const Node* const node = now->tree->find(kBiosSettings);
    if (node == nullptr) return no_content(kChanging);
    return changed(now->tree->make(kBiosSettings, *node), *node->schema, kChanging, unchanged);
  }

  Current& current_;
  Accounts& accounts_;
  const RedfishOptions options_;
  std::mutex mutex_;
  ViewPtr view_;
  Events events_;
  Live live_;
};

Redfish::Redfish(Current& current, Accounts& accounts, const RedfishOptions& options)
    : service_(std::make_unique<Service>(current, accounts, options)) {}

Redfish::~Redfish() = default;

Response Redfish::refuse(int status, const Request& request) {
  const std::string_view path = request.path;
  return error_response(status, status == 404 ? path.substr(0, 256) : std::string_view());
}

bool Redfish::is_public(const Request& request) {
  const std::string path = path_of(request);
  const bool is_of_all = path == kRoot || document_at(path) != nullptr;
  return request.is_read() ? is_of_all : path == kSessions && request.method == Method::kPost;
}

Response Redfish::answer(const Request& request) {
  try {
    return service_->answer(request);
  } catch (const TooLarge&) {
    return error_response(507);
  }
}

}  // namespace zymdb::service
