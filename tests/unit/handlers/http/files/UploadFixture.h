#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "kelo/handlers/http/files/FileStorage.h"
#include "support/Requests.h"

namespace halvor::kelo::test {

// A storage root of its own under the system's temporary folder, removed afterwards, with
// remounts off (this machine's folders are no mount points).
class StorageRootTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root = std::filesystem::temp_directory_path() /
           ("kelo-files-" + std::to_string(::getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root);
    FileStorage::configure(root.string(), false);
  }
  void TearDown() override {
    FileStorage::configure("", true);
    std::filesystem::remove_all(root);
  }

  // Every regular file under the root, as paths relative to it.
  std::vector<std::string> filesUnderRoot() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      if (entry.is_regular_file()) {
        found.push_back(std::filesystem::relative(entry.path(), root).string());
      }
    }
    return found;
  }

  std::filesystem::path root;
};

struct Part {
  std::string name;
  std::string fileName;  // empty: a form field
  std::string content;
};

constexpr const char* kBoundary = "kelo-test-boundary";

// A multipart/form-data body of the parts, in order.
inline std::string multipartBody(const std::vector<Part>& parts) {
  std::string body;
  for (const Part& part : parts) {
    body += std::string("--") + kBoundary + "\r\nContent-Disposition: form-data; name=\"" +
            part.name + "\"";
    if (!part.fileName.empty()) body += "; filename=\"" + part.fileName + "\"";
    body += "\r\n\r\n" + part.content + "\r\n";
  }
  return body + "--" + kBoundary + "--\r\n";
}

inline web::HttpRequestPtr multipartRequest(web::HttpMethod method, const std::string& path,
                                            const std::string& query,
                                            const std::vector<Part>& parts) {
  web::HttpRequestPtr req = makeRequest(method, path, query, multipartBody(parts));
  req->addHeader("Content-Type", std::string("multipart/form-data; boundary=") + kBoundary);
  return req;
}

}  // namespace halvor::kelo::test
