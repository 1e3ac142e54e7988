#pragma once

#include <string>

namespace halvor::sim {

// Salted password hashes (PBKDF2 with HMAC-SHA-256 from OpenSSL), so that the host keeps no
// password in clear. The stored text names the method, the iteration count, the salt and the
// hash: "pbkdf2-sha256$<iterations>$<salt hex>$<hash hex>".
class PasswordHash {
 public:
  PasswordHash() = delete;

  static constexpr int kIterations = 20000;

  // A fresh random salt each time: the same password twice gives two different texts.
  static std::string make(const std::string& password);
  // Whether `password` gives `stored`; false for a text of another form. The comparison takes
  // the same time wherever the first difference lies.
  static bool verify(const std::string& password, const std::string& stored);
};

}  // namespace halvor::sim
