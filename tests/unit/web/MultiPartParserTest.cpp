#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "kelo/web/MultiPartParser.h"

using namespace halvor::kelo::web;
namespace fs = std::filesystem;

namespace {

const std::string kBoundary = "----kelo7MA4YWxk";

std::string part(const std::string& disposition, const std::string& content,
                 const std::string& type = "") {
  std::string text =
      "--" + kBoundary + "\r\nContent-Disposition: form-data; " + disposition + "\r\n";
  if (!type.empty()) text += "Content-Type: " + type + "\r\n";
  return text + "\r\n" + content + "\r\n";
}

HttpRequestPtr formRequest(const std::string& body) {
  auto req = HttpRequest::newHttpRequest();
  req->setMethod(Post);
  req->addHeader("Content-Type", "multipart/form-data; boundary=" + kBoundary);
  req->setBody(body);
  return req;
}

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

class MultiPartParserTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/kelo-multipart-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    directory = pattern;
  }
  void TearDown() override { fs::remove_all(directory); }
  fs::path directory;
};

TEST_F(MultiPartParserTest, FieldsAndFiles) {
  std::string body = part("name=\"targetStorage\"", "USB1") +
                     part("name=\"file\"; filename=\"preset.bin\"", std::string("a\0b\r\nc", 6),
                          "application/octet-stream") +
                     part("name=\"note\"", "") + "--" + kBoundary + "--\r\n";
  MultiPartParser parser;
  ASSERT_EQ(parser.parse(formRequest(body)), 0);
  EXPECT_EQ(parser.getParameters().at("targetStorage"), "USB1");
  EXPECT_EQ(parser.getParameter("note"), "");
  EXPECT_EQ(parser.getParameters().count("note"), 1u);
  ASSERT_EQ(parser.getFiles().size(), 1u);
  const HttpFile& file = parser.getFiles()[0];
  EXPECT_EQ(file.getItemName(), "file");
  EXPECT_EQ(file.getFileName(), "preset.bin");
  EXPECT_EQ(file.getFileExtension(), "bin");
  EXPECT_EQ(file.getContentType(), "application/octet-stream");
  EXPECT_EQ(file.fileLength(), 6u);
  EXPECT_EQ(file.fileContent(), std::string_view("a\0b\r\nc", 6));
  ASSERT_EQ(file.save(directory.string()), 0);
  EXPECT_EQ(readFile(directory / "preset.bin"), std::string("a\0b\r\nc", 6));
}

TEST_F(MultiPartParserTest, EmptyFile) {
  std::string body = part("name=\"file\"; filename=\"empty.txt\"", "") + "--" + kBoundary + "--";
  MultiPartParser parser;
  ASSERT_EQ(parser.parse(formRequest(body)), 0);
  ASSERT_EQ(parser.getFiles().size(), 1u);
  EXPECT_EQ(parser.getFiles()[0].fileLength(), 0u);
  ASSERT_EQ(parser.getFiles()[0].save(directory.string()), 0);
  EXPECT_TRUE(fs::exists(directory / "empty.txt"));
  EXPECT_EQ(fs::file_size(directory / "empty.txt"), 0u);
}

TEST_F(MultiPartParserTest, UnsafeFileNamesAreRefusedAndNothingIsWritten) {
  for (const std::string& name :
       {std::string("../evil.txt"), std::string("/etc/passwd"), std::string("a/b.txt"),
        std::string("..\\evil.txt"), std::string(".."), std::string(""), std::string("a\0b", 3)}) {
    std::string body =
        part("name=\"file\"; filename=\"" + name + "\"", "payload") + "--" + kBoundary + "--";
    MultiPartParser parser;
    ASSERT_EQ(parser.parse(formRequest(body)), 0) << name;
    ASSERT_EQ(parser.getFiles().size(), 1u);
    EXPECT_EQ(parser.getFiles()[0].save((directory / "inner").string()), -1) << name;
  }
  EXPECT_FALSE(fs::exists(directory / "evil.txt"));
  EXPECT_FALSE(fs::exists(directory / "inner" / "a"));
  EXPECT_TRUE(!fs::exists(directory / "inner") || fs::is_empty(directory / "inner"));
}

TEST_F(MultiPartParserTest, SaveAsWritesTheChosenPath) {
  std::string body = part("name=\"f\"; filename=\"x.txt\"", "data") + "--" + kBoundary + "--";
  MultiPartParser parser;
  ASSERT_EQ(parser.parse(formRequest(body)), 0);
  ASSERT_EQ(parser.getFiles()[0].saveAs((directory / "sub" / "y.txt").string()), 0);
  EXPECT_EQ(readFile(directory / "sub" / "y.txt"), "data");
}

TEST_F(MultiPartParserTest, MalformedBodiesAreErrors) {
  MultiPartParser parser;
  // No closing delimiter.
  EXPECT_EQ(parser.parse(formRequest(part("name=\"a\"", "1"))), -1);
  // No Content-Disposition.
  EXPECT_EQ(
      parser.parse(formRequest("--" + kBoundary + "\r\nContent-Type: text/plain\r\n\r\nx\r\n--" +
                               kBoundary + "--")),
      -1);
  // No name.
  EXPECT_EQ(parser.parse(formRequest(part("filename=\"a\"", "1") + "--" + kBoundary + "--")), -1);
  // No boundary at all.
  EXPECT_EQ(parser.parse(formRequest("just text")), -1);
  // Not multipart.
  auto json = HttpRequest::newHttpRequest();
  json->addHeader("Content-Type", "application/json");
  json->setBody("{}");
  EXPECT_EQ(parser.parse(json), -1);
  auto noBoundary = HttpRequest::newHttpRequest();
  noBoundary->addHeader("Content-Type", "multipart/form-data");
  EXPECT_EQ(parser.parse(noBoundary), -1);
  EXPECT_EQ(parser.parse(nullptr), -1);
}

TEST_F(MultiPartParserTest, QuotedBoundaryAndBodyInAFile) {
  std::string body = part("name=\"file\"; filename=\"big.bin\"", std::string(100000, 'z')) +
                     part("name=\"k\"", "v") + "--" + kBoundary + "--\r\n";
  fs::path bodyFile = directory / "body";
  std::ofstream(bodyFile, std::ios::binary) << body;
  auto req = HttpRequest::newHttpRequest();
  req->addHeader("Content-Type", "multipart/form-data; boundary=\"" + kBoundary + "\"");
  req->setBodyFile(bodyFile.string(), body.size());
  EXPECT_EQ(req->body().size(), body.size());
  MultiPartParser parser;
  ASSERT_EQ(parser.parse(req), 0);
  EXPECT_EQ(parser.getParameter("k"), "v");
  ASSERT_EQ(parser.getFiles().size(), 1u);
  HttpFile file = parser.getFiles()[0];
  req.reset();
  parser = MultiPartParser();
  // The file keeps the request, and so the mapped body, alive.
  EXPECT_EQ(file.fileLength(), 100000u);
  EXPECT_EQ(file.fileContent().substr(0, 3), "zzz");
  ASSERT_EQ(file.save((directory / "out").string()), 0);
  EXPECT_EQ(fs::file_size(directory / "out" / "big.bin"), 100000u);
}

TEST_F(MultiPartParserTest, PartsOfALargeBodyFileAreFoundAcrossSearchWindowsAndSavedWhole) {
  // Parts whose ends fall on and around the 4 MB steps of the search through a body file.
  std::string first(4 * 1024 * 1024 - 150, '\0');
  for (std::size_t i = 0; i < first.size(); ++i) first[i] = static_cast<char>(i % 253);
  const std::string second(4 * 1024 * 1024 + 3, 'q');
  std::string body = part("name=\"a\"; filename=\"first.bin\"", first) +
                     part("name=\"b\"; filename=\"second.bin\"", second) + "--" + kBoundary +
                     "--\r\n";
  fs::path bodyFile = directory / "body";
  std::ofstream(bodyFile, std::ios::binary) << body;
  auto req = HttpRequest::newHttpRequest();
  req->addHeader("Content-Type", "multipart/form-data; boundary=" + kBoundary);
  req->setBodyFile(bodyFile.string(), body.size());
  MultiPartParser parser;
  ASSERT_EQ(parser.parse(req), 0);
  ASSERT_EQ(parser.getFiles().size(), 2u);
  EXPECT_EQ(parser.getFiles()[0].fileLength(), first.size());
  EXPECT_EQ(parser.getFiles()[1].fileLength(), second.size());
  // The content is still readable after the search gave its pages back.
  EXPECT_TRUE(parser.getFiles()[0].fileContent() == first);
  ASSERT_EQ(parser.getFiles()[0].save((directory / "out").string()), 0);
  ASSERT_EQ(parser.getFiles()[1].save((directory / "out").string()), 0);
  EXPECT_TRUE(readFile(directory / "out" / "first.bin") == first);
  EXPECT_TRUE(readFile(directory / "out" / "second.bin") == second);
  // Written under a hidden name and renamed: nothing else is left in the folder.
  EXPECT_EQ(std::distance(fs::directory_iterator(directory / "out"), fs::directory_iterator()), 2);
}

TEST(HttpFileTest, SafeNames) {
  EXPECT_TRUE(HttpFile::isSafeFileName("report.pdf"));
  EXPECT_TRUE(HttpFile::isSafeFileName(".hidden"));
  EXPECT_FALSE(HttpFile::isSafeFileName(""));
  EXPECT_FALSE(HttpFile::isSafeFileName("."));
  EXPECT_FALSE(HttpFile::isSafeFileName(".."));
  EXPECT_FALSE(HttpFile::isSafeFileName("a/b"));
  EXPECT_FALSE(HttpFile::isSafeFileName("a\\b"));
  EXPECT_FALSE(HttpFile::isSafeFileName("a..b"));
  EXPECT_FALSE(HttpFile::isSafeFileName(std::string_view("a\0b", 3)));
}

}  // namespace
