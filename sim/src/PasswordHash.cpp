#include "sim/PasswordHash.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <array>
#include <stdexcept>
#include <vector>

namespace halvor::sim {

namespace {

constexpr const char* kMethod = "pbkdf2-sha256";
constexpr std::size_t kSaltBytes = 16;
constexpr std::size_t kHashBytes = 32;

std::string toHex(const unsigned char* bytes, std::size_t size) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0f];
  }
  return text;
}

bool fromHex(const std::string& text, std::vector<unsigned char>& bytes) {
  if (text.size() % 2 != 0) return false;
  auto digit = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
  };
  bytes.clear();
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = digit(text[i]);
    const int low = digit(text[i + 1]);
    if (high < 0 || low < 0) return false;
    bytes.push_back(static_cast<unsigned char>(high * 16 + low));
  }
  return true;
}

std::array<unsigned char, kHashBytes> derive(const std::string& password,
                                             const std::vector<unsigned char>& salt,
                                             int iterations) {
  std::array<unsigned char, kHashBytes> hash{};
  if (PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), salt.data(),
                        static_cast<int>(salt.size()), iterations, EVP_sha256(), hash.size(),
                        hash.data()) != 1) {
    throw std::runtime_error("password hashing failed");
  }
  return hash;
}

}  // namespace

std::string PasswordHash::make(const std::string& password) {
  std::vector<unsigned char> salt(kSaltBytes);
  if (RAND_bytes(salt.data(), static_cast<int>(salt.size())) != 1) {
    throw std::runtime_error("no random bytes for a password salt");
  }
  const auto hash = derive(password, salt, kIterations);
  return std::string(kMethod) + "$" + std::to_string(kIterations) + "$" +
         toHex(salt.data(), salt.size()) + "$" + toHex(hash.data(), hash.size());
}

bool PasswordHash::verify(const std::string& password, const std::string& stored) {
  const std::size_t first = stored.find('$');
  const std::size_t second = stored.find('$', first + 1);
  const std::size_t third = stored.find('$', second + 1);
  if (first == std::string::npos || second == std::string::npos || third == std::string::npos ||
      stored.compare(0, first, kMethod) != 0) {
    return false;
  }
  int iterations = 0;
  try {
    iterations = std::stoi(stored.substr(first + 1, second - first - 1));
  } catch (const std::exception&) {
    return false;
  }
  std::vector<unsigned char> salt;
  std::vector<unsigned char> expected;
  if (iterations <= 0 || !fromHex(stored.substr(second + 1, third - second - 1), salt) ||
      !fromHex(stored.substr(third + 1), expected) || expected.size() != kHashBytes) {
    return false;
  }
  const auto hash = derive(password, salt, iterations);
  return CRYPTO_memcmp(hash.data(), expected.data(), kHashBytes) == 0;
}

}  // namespace halvor::sim
