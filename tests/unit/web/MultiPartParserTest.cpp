#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "DiskBudget.h"
#include "PartSpool.h"
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

// A body whose contents hold near misses of the delimiter, line breaks and NUL bytes, so that
// pieces cut anywhere fall inside a delimiter, a header block and a content.
std::string trickyBody() {
  std::string binary;
  for (int i = 0; i < 5000; ++i) binary.push_back(static_cast<char>((i * 7919) % 256));
  const std::string nearMiss = "\r\n--" + kBoundary.substr(0, kBoundary.size() - 1) + "x\r\n--";
  return "preamble to ignore\r\n" + part("name=\"targetStorage\"", "USB1") +
         part("name=\"file\"; filename=\"a.bin\"", binary + nearMiss + binary,
              "application/octet-stream") +
         part("name=\"empty\"; filename=\"empty.txt\"", "") +
         part("name=\"note\"", nearMiss + "\r\n") +
         part("name=\"second\"; filename=\"b.txt\"", "\r\n\r\n-" + nearMiss) + "--" + kBoundary +
         "--\r\nepilogue";
}

struct Parts {
  std::map<std::string, std::string> fields;
  std::vector<std::tuple<std::string, std::string, std::string, std::string>> files;
  int result = 0;
};

Parts partsOf(const MultiPartParser& parser, int result) {
  Parts parts;
  parts.fields = parser.getParameters();
  parts.result = result;
  for (const HttpFile& file : parser.getFiles()) {
    parts.files.emplace_back(file.getItemName(), file.getFileName(), file.getContentType(),
                             std::string(file.fileContent()));
  }
  return parts;
}

void expectSameParts(const Parts& expected, const Parts& actual, const std::string& what) {
  EXPECT_EQ(actual.result, expected.result) << what;
  EXPECT_EQ(actual.fields, expected.fields) << what;
  ASSERT_EQ(actual.files.size(), expected.files.size()) << what;
  for (std::size_t i = 0; i < expected.files.size(); ++i) {
    EXPECT_TRUE(actual.files[i] == expected.files[i]) << what << ", file " << i;
  }
}

// Feeds `body` in pieces of random sizes (1 byte up to `largest`).
Parts feedInPieces(const std::string& body, std::mt19937& random, std::size_t largest,
                   std::unique_ptr<MultiPartParser::PartStore> store) {
  MultiPartParser parser;
  parser.begin(kBoundary, std::move(store));
  std::uniform_int_distribution<std::size_t> size(1, largest);
  std::size_t at = 0;
  while (at < body.size()) {
    const std::size_t length = std::min(size(random), body.size() - at);
    // Each piece lives only for its call, as a read buffer does.
    const std::string piece = body.substr(at, length);
    parser.feed(piece);
    at += length;
  }
  const int result = parser.finish();
  return partsOf(parser, result);
}

TEST_F(MultiPartParserTest, ABodyFedInRandomSizedPiecesGivesTheSamePartsAsTheWholeBody) {
  std::mt19937 random(20261123);
  const std::string complete = trickyBody();
  // The whole body, a body cut before its closing delimiter, and one malformed half way.
  const std::string cut = complete.substr(0, complete.find("name=\"second\""));
  std::string broken = complete;
  broken.replace(broken.find("Content-Disposition: form-data; name=\"note\""), 19,
                 "X-Nothing: here");
  // A content that begins with the delimiter itself: the empty line's break is then the
  // delimiter's, and the header block has no end before it.
  const std::string delimiterFirst = "--" + kBoundary +
                                     "\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n--" +
                                     kBoundary + " in the middle\r\n--" + kBoundary + "--";
  for (const std::string& body : {complete, cut, broken, delimiterFirst}) {
    MultiPartParser whole;
    const Parts expected = partsOf(whole, whole.parse(formRequest(body)));
    for (std::size_t largest : {1u, 2u, 3u, 7u, 64u, 1000u, 70000u}) {
      for (int round = 0; round < 5; ++round) {
        const std::string what = "pieces up to " + std::to_string(largest);
        expectSameParts(expected, feedInPieces(body, random, largest, nullptr), what);
        auto spool = std::make_unique<PartSpool>(directory.string(), directory.string(),
                                                 std::make_shared<DiskBudget>()->lease(), 1u << 20);
        expectSameParts(expected, feedInPieces(body, random, largest, std::move(spool)),
                        what + ", spooled");
      }
    }
  }
  // Every spooled part went with its parser.
  EXPECT_TRUE(fs::is_empty(directory));
}

TEST_F(MultiPartParserTest, TheWholeBodyParseFindsTheExpectedParts) {
  MultiPartParser parser;
  ASSERT_EQ(parser.parse(formRequest(trickyBody())), 0);
  EXPECT_EQ(parser.getParameter("targetStorage"), "USB1");
  EXPECT_EQ(parser.getParameter("note").substr(0, 4), "\r\n--");
  ASSERT_EQ(parser.getFiles().size(), 3u);
  EXPECT_EQ(parser.getFiles()[0].fileLength(), 10000u + kBoundary.size() + 8);
  EXPECT_EQ(parser.getFiles()[1].fileLength(), 0u);
  EXPECT_EQ(parser.getFiles()[2].getFileName(), "b.txt");
}

TEST_F(MultiPartParserTest, SpooledPartsAreMovedIntoPlaceAndGoneWithTheirLastCopy) {
  const std::string content(300000, 'm');
  const std::string body =
      part("name=\"file\"; filename=\"big.bin\"", content) + "--" + kBoundary + "--";
  MultiPartParser parser;
  auto budget = std::make_shared<DiskBudget>();
  parser.begin(kBoundary,
               std::make_unique<PartSpool>((directory / "spool").string(), directory.string(),
                                           budget->lease(), 1u << 20));
  ASSERT_TRUE(parser.feed(body));
  ASSERT_EQ(parser.finish(), 0);
  ASSERT_EQ(parser.getFiles().size(), 1u);
  HttpFile file = parser.getFiles()[0];
  parser = MultiPartParser();
  const std::string spool = file.spoolPath();
  ASSERT_EQ(fs::path(spool).parent_path(), directory / "spool");
  EXPECT_EQ(budget->used(), content.size());
  struct stat spooled {};
  ASSERT_EQ(::stat(spool.c_str(), &spooled), 0);
  EXPECT_EQ(spooled.st_mode & 0777, 0644u);
  ASSERT_EQ(file.save((directory / "out").string()), 0);
  struct stat saved {};
  ASSERT_EQ(::stat((directory / "out" / "big.bin").c_str(), &saved), 0);
  // Moved, not copied: the saved file is the spooled one.
  EXPECT_EQ(saved.st_ino, spooled.st_ino);
  EXPECT_EQ(saved.st_dev, spooled.st_dev);
  EXPECT_TRUE(readFile(directory / "out" / "big.bin") == content);
  EXPECT_TRUE(file.fileContent() == content);
  // A second save still works: the spooled file keeps its own name until it goes.
  ASSERT_EQ(file.saveAs((directory / "again.bin").string()), 0);
  file = HttpFile("x", "y", "", "", nullptr);
  EXPECT_FALSE(fs::exists(spool));
  EXPECT_EQ(budget->used(), 0u);
  EXPECT_TRUE(readFile(directory / "again.bin") == content);
  EXPECT_EQ(std::distance(fs::directory_iterator(directory / "out"), fs::directory_iterator()), 1);
}

TEST_F(MultiPartParserTest, SpooledPartsRespectTheirLimitsAndLeaveNothingWhenRefused) {
  auto budget = std::make_shared<DiskBudget>();
  budget->configure(1000);
  // Beyond the disk budget.
  MultiPartParser parser;
  parser.begin(kBoundary, std::make_unique<PartSpool>(directory.string(), directory.string(),
                                                      budget->lease(), 1u << 20));
  EXPECT_FALSE(parser.feed(part("name=\"f\"; filename=\"a\"", std::string(2000, 'a'))));
  EXPECT_TRUE(parser.overLimit());
  EXPECT_EQ(parser.finish(), -1);
  EXPECT_TRUE(fs::is_empty(directory));
  EXPECT_EQ(budget->used(), 0u);
  // Fields beyond the memory they may take.
  parser.begin(kBoundary, nullptr, 100);
  EXPECT_FALSE(parser.feed(part("name=\"f\"", std::string(200, 'a')) + "--" + kBoundary));
  EXPECT_TRUE(parser.overLimit());
  // A malformed body is not over a limit.
  parser.begin(kBoundary, nullptr, 100);
  EXPECT_FALSE(parser.feed("--" + kBoundary + "\r\nno colon\r\n\r\nx\r\n--" + kBoundary));
  EXPECT_FALSE(parser.overLimit());
  EXPECT_EQ(parser.finish(), -1);
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
