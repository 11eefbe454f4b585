// The certificate of the service and its key, which may be renewed while it runs.
#ifndef ZYMDB_SERVICE_HTTP_CERTIFICATE_H
#define ZYMDB_SERVICE_HTTP_CERTIFICATE_H

#include <gnutls/abstract.h>
#include <gnutls/gnutls.h>

#include <memory>
#include <mutex>
#include <string>

namespace zymdb::service {

// TLS 1.2 and later, and what is sound there.
inline constexpr char kTlsPriorities[] =
    "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2:-RSA:-CIPHER-ALL:+AES-256-GCM:+CHACHA20-POLY1305:+AES-128-"
    "GCM:"
    "%SERVER_PRECEDENCE";
class Certificate {
 public:
  // Throws ServiceError, here and below: for a file that cannot be read, for what is no certificate or no
  // key, and for a key that is another certificate's.
  Certificate(std::string certificate_file, std::string key_file);
  ~Certificate();
  Certificate(const Certificate&) = delete;
  Certificate& operator=(const Certificate&) = delete;

  // Reads the files again. Where that fails everything stays as it was.
  void reload();

  // What the TLS library asks for at each handshake. It has no place for an argument: it is about the
  // certificate that was made last, and a process has one.
  static gnutls_certificate_retrieve_function3* retriever();

 private:
  struct Pair;
  std::shared_ptr<const Pair> current();

  const std::string certificate_file_;
  const std::string key_file_;
  std::mutex mutex_;
  std::shared_ptr<const Pair> current_;
};

}  // namespace zymdb::service

#endif
