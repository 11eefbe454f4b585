#include "service/http/certificate.h"

#include <gnutls/x509.h>

#include <array>
#include <atomic>
#include <new>
#include <utility>

#include "common/source_file.h"
#include "service/http/address.h"

namespace zymdb::service {
namespace {

constexpr unsigned kLongestChain = 10;

std::atomic<Certificate*> served = nullptr;

void require(int result, const std::string& file, const std::string& what) {
  if (result < 0) throw ServiceError(file + " is no " + what + ": " + gnutls_strerror(result));
}

std::string read_file(const std::string& path) {
  try {
    return read_source(path);
  } catch (const SourceError& error) {
    throw ServiceError(std::string("cannot read ") + error.what());
  }
}

gnutls_datum_t datum(const std::string& text) {
  return {reinterpret_cast<unsigned char*>(const_cast<char*>(text.data())),
          static_cast<unsigned>(text.size())};
}

struct Wiped {
  explicit Wiped(std::string content) : text(std::move(content)) {}
  ~Wiped() { gnutls_memset(text.data(), 0, text.size()); }
  std::string text;
};

std::string key_id(gnutls_pubkey_t key) {
  std::array<unsigned char, 64> id{};
  size_t size = id.size();
  if (gnutls_pubkey_get_key_id(key, GNUTLS_KEYID_USE_SHA256, id.data(), &size) < 0) return "unknown";
  return {reinterpret_cast<const char*>(id.data()), size};
}

std::string key_id(gnutls_privkey_t key) {
  gnutls_pubkey_t its = nullptr;
  if (gnutls_pubkey_init(&its) < 0) throw std::bad_alloc();
  const bool has_one = gnutls_pubkey_import_privkey(its, key, 0, 0) >= 0;
  const std::string id = has_one ? key_id(its) : "";
  gnutls_pubkey_deinit(its);
  return id;
}

}  // namespace

struct Certificate::Pair {
  Pair(const std::string& certificate_file, const std::string& key_file)
      : chain(read_file(certificate_file)) {
    Wiped key_text(read_file(key_file));
    const auto key_datum = datum(key_text.text);
    if (gnutls_x509_privkey_init(&key) < 0) throw std::bad_alloc();
    try {
      require(gnutls_x509_privkey_import2(key, &key_datum, GNUTLS_X509_FMT_PEM, nullptr, 0), key_file, "key");
      Copy copy;
      require(copy_to(copy), certificate_file, "certificate");
      if (key_id(copy.key) != key_id(copy.chain[0].pubkey))
        throw ServiceError(key_file + " is not the key of " + certificate_file);
    } catch (...) {
      gnutls_x509_privkey_deinit(key);
      throw;
    }
  }
  ~Pair() { gnutls_x509_privkey_deinit(key); }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;

  // Owns what the TLS library would own.
  struct Copy {
    Copy() = default;
    ~Copy() {
      for (unsigned i = 0; i < count; ++i) gnutls_pcert_deinit(&chain[i]);
      gnutls_free(chain);
      if (key != nullptr) gnutls_privkey_deinit(key);
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    gnutls_pcert_st* chain = nullptr;
    unsigned count = 0;
    gnutls_privkey_t key = nullptr;
  };

  int copy_to(Copy& copy) const {
    copy.chain = static_cast<gnutls_pcert_st*>(gnutls_calloc(kLongestChain, sizeof *copy.chain));
    if (copy.chain == nullptr) return GNUTLS_E_MEMORY_ERROR;
    unsigned count = kLongestChain;
    const auto text = datum(chain);
    int result = gnutls_pcert_list_import_x509_raw(copy.chain, &count, &text, GNUTLS_X509_FMT_PEM, 0);
    if (result < 0) return result;
    copy.count = count;
    if (result = gnutls_privkey_init(&copy.key); result < 0) return result;
    return gnutls_privkey_import_x509(copy.key, key, GNUTLS_PRIVKEY_IMPORT_COPY);
  }

  const std::string chain;
  gnutls_x509_privkey_t key = nullptr;
};

Certificate::Certificate(std::string certificate_file, std::string key_file)
    : certificate_file_(std::move(certificate_file)), key_file_(std::move(key_file)) {
  reload();
  served = this;
}

Certificate::~Certificate() {
  Certificate* self = this;
  served.compare_exchange_strong(self, nullptr);
}

void Certificate::reload() {
  auto renewed = std::make_shared<const Pair>(certificate_file_, key_file_);
  const std::lock_guard lock(mutex_);
  current_.swap(renewed);
}

std::shared_ptr<const Certificate::Pair> Certificate::current() {
  const std::lock_guard lock(mutex_);
  return current_;
}

// A session may outlive what it was given, and so gets its own.
gnutls_certificate_retrieve_function3* Certificate::retriever() {
  return [](gnutls_session_t, const struct gnutls_cert_retr_st*, gnutls_pcert_st** chain, unsigned* count,
            gnutls_ocsp_data_st** ocsp, unsigned* ocsp_count, gnutls_privkey_t* key, unsigned* flags) -> int {
    auto* const certificate = served.load();
    if (certificate == nullptr) return -1;
    Pair::Copy copy;
    if (certificate->current()->copy_to(copy) < 0) return -1;
    *chain = std::exchange(copy.chain, nullptr);
    *count = std::exchange(copy.count, 0);
    *key = std::exchange(copy.key, nullptr);
    *ocsp = nullptr;
    *ocsp_count = 0;
    *flags = GNUTLS_CERT_RETR_DEINIT_ALL;
    return 0;
  };
}

}  // namespace zymdb::service
