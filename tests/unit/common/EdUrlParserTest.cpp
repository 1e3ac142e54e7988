#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "kelo/common/EdUrlParser.h"

namespace halvor::kelo {
namespace {

using Map = std::unordered_map<std::string, std::string>;
using List = std::vector<query_kv_t>;

std::unique_ptr<EdUrlParser> parsed(const std::string& url) {
  return std::unique_ptr<EdUrlParser>(EdUrlParser::parseUrl(url));
}

// ---- parseKeyValue and its two forms ----

TEST(EdUrlParserTest, MapKeepsValuesPercentCoded) {
  Map map;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "path=%2Fa&x=1", true), 2);
  ASSERT_EQ(map.size(), 2U);
  EXPECT_EQ(map.at("path"), "%2Fa");
  EXPECT_EQ(map.at("x"), "1");
}

TEST(EdUrlParserTest, StrictDropsPairWithEmptyValue) {
  Map map;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "a=&b=2", true), 1);
  ASSERT_EQ(map.size(), 1U);
  EXPECT_EQ(map.at("b"), "2");
}

TEST(EdUrlParserTest, LaxKeepsPairWithEmptyValue) {
  Map map;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "a=&b=2", false), 2);
  ASSERT_EQ(map.size(), 2U);
  EXPECT_EQ(map.at("a"), "");
  EXPECT_EQ(map.at("b"), "2");
}

TEST(EdUrlParserTest, StrictIsOffByDefault) {
  Map map;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "a=&b=2"), 2);
  List list;
  EXPECT_EQ(EdUrlParser::parseKeyValueList(&list, "a=&b=2"), 2);
}

TEST(EdUrlParserTest, RepeatedKeyLastWinsInMapAllKeptInList) {
  Map map;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "a=1&a=2", true), 2);
  ASSERT_EQ(map.size(), 1U);
  EXPECT_EQ(map.at("a"), "2");

  List list;
  EXPECT_EQ(EdUrlParser::parseKeyValueList(&list, "a=1&a=2", true), 2);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].key, "a");
  EXPECT_EQ(list[0].val, "1");
  EXPECT_EQ(list[1].key, "a");
  EXPECT_EQ(list[1].val, "2");
}

TEST(EdUrlParserTest, BlankOrEmptyQueryGivesMinusOne) {
  Map map;
  List list;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "   ", true), -1);
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "", false), -1);
  EXPECT_EQ(EdUrlParser::parseKeyValueList(&list, " \t ", false), -1);
  EXPECT_TRUE(map.empty());
  EXPECT_TRUE(list.empty());
}

TEST(EdUrlParserTest, LeadingBlanksAreSkipped) {
  Map map;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "  a=1", true), 1);
  EXPECT_EQ(map.at("a"), "1");
}

TEST(EdUrlParserTest, SecondEqualsSignMakesTheKey) {
  Map map;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "a=b=c", true), 1);
  ASSERT_EQ(map.size(), 1U);
  EXPECT_EQ(map.at("b"), "c");
}

TEST(EdUrlParserTest, ValueWithoutKeyCountsOnlyWhenLax) {
  List strictList;
  EXPECT_EQ(EdUrlParser::parseKeyValueList(&strictList, "alone", true), 0);
  EXPECT_TRUE(strictList.empty());

  List laxList;
  EXPECT_EQ(EdUrlParser::parseKeyValueList(&laxList, "alone&=v", false), 2);
  ASSERT_EQ(laxList.size(), 2U);
  EXPECT_EQ(laxList[0].key, "");
  EXPECT_EQ(laxList[0].val, "alone");
  EXPECT_EQ(laxList[1].key, "");
  EXPECT_EQ(laxList[1].val, "v");
}

TEST(EdUrlParserTest, KeyDoesNotCarryIntoNextPair) {
  List list;
  EXPECT_EQ(EdUrlParser::parseKeyValueList(&list, "a=1&b", false), 2);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[1].key, "");
  EXPECT_EQ(list[1].val, "b");
}

TEST(EdUrlParserTest, EmptySegmentsAreNotCounted) {
  List list;
  EXPECT_EQ(EdUrlParser::parseKeyValueList(&list, "&&a=1&&", false), 1);
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0].key, "a");
}

TEST(EdUrlParserTest, NothingIsDecodedWhileSplitting) {
  Map map;
  EXPECT_EQ(EdUrlParser::parseKeyValueMap(&map, "a%3Db=x+y%26z", true), 1);
  EXPECT_EQ(map.at("a%3Db"), "x+y%26z");
}

int countingCallback(void* obj, std::string key, std::string value) {
  auto* seen = static_cast<std::vector<std::string>*>(obj);
  seen->push_back(key + "|" + value);
  return 1000;  // ignored: the count comes from the splitter
}

TEST(EdUrlParserTest, CallbackGetsObjectAndEachPair) {
  std::vector<std::string> seen;
  EXPECT_EQ(EdUrlParser::parseKeyValue("x=1&y=2&z=", countingCallback, &seen, true), 2);
  EXPECT_EQ(seen, (std::vector<std::string>{"x|1", "y|2"}));
}

TEST(EdUrlParserTest, CallbacksReturnContainerSize) {
  Map map;
  EXPECT_EQ(EdUrlParser::kvCallbackMap(&map, "a", "1"), 1);
  EXPECT_EQ(EdUrlParser::kvCallbackMap(&map, "a", "2"), 1);
  EXPECT_EQ(EdUrlParser::kvCallbackMap(&map, "b", "3"), 2);
  EXPECT_EQ(map.at("a"), "2");

  List list;
  EXPECT_EQ(EdUrlParser::kvCallbackVec(&list, "a", "1"), 1);
  EXPECT_EQ(EdUrlParser::kvCallbackVec(&list, "a", "2"), 2);
  EXPECT_EQ(list[1].val, "2");
}

// ---- percent coding ----

TEST(EdUrlParserTest, DecodePlusAndEscapes) {
  EXPECT_EQ(EdUrlParser::urlDecode("a+b%20c"), "a b c");
  EXPECT_EQ(EdUrlParser::urlDecode("%2Fsystem%2falarms"), "/system/alarms");
  EXPECT_EQ(EdUrlParser::urlDecode(""), "");
  EXPECT_EQ(EdUrlParser::urlDecode("plain"), "plain");
}

TEST(EdUrlParserTest, DecodeOfShortOrBadEscapeIsEmpty) {
  EXPECT_EQ(EdUrlParser::urlDecode("abc%2"), "");
  EXPECT_EQ(EdUrlParser::urlDecode("%zz"), "");
  EXPECT_EQ(EdUrlParser::urlDecode("abc%"), "");
  EXPECT_EQ(EdUrlParser::urlDecode("ok%4gok"), "");
  EXPECT_EQ(EdUrlParser::urlDecode("%g4"), "");
}

TEST(EdUrlParserTest, DecodeKeepsNulAndHighBytes) {
  EXPECT_EQ(EdUrlParser::urlDecode("%00"), std::string(1, '\0'));
  EXPECT_EQ(EdUrlParser::urlDecode("%C3%a9"), "\xC3\xA9");
}

TEST(EdUrlParserTest, EncodeKeepsUnreservedAndEscapesRest) {
  EXPECT_EQ(EdUrlParser::urlEncode("a b/c"), "a+b%2Fc");
  EXPECT_EQ(EdUrlParser::urlEncode("Az09*-._"), "Az09*-._");
  EXPECT_EQ(EdUrlParser::urlEncode("~+%"), "%7E%2B%25");
  EXPECT_EQ(EdUrlParser::urlEncode(std::string("\0\xff", 2)), "%00%FF");
  EXPECT_EQ(EdUrlParser::urlEncode(""), "");
}

TEST(EdUrlParserTest, EveryByteSurvivesEncodeThenDecode) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
  EXPECT_EQ(EdUrlParser::urlDecode(EdUrlParser::urlEncode(all)), all);
}

TEST(EdUrlParserTest, ToCharReadsTwoDigitsOfEitherCase) {
  EXPECT_EQ(EdUrlParser::toChar("4a"), 'J');
  EXPECT_EQ(EdUrlParser::toChar("4A"), 'J');
  EXPECT_EQ(static_cast<unsigned char>(EdUrlParser::toChar("fF")), 0xFFU);
}

TEST(EdUrlParserTest, ToCharThrowsTwoHundredOnBadDigits) {
  for (const char* bad : {"zz", "4", "", "g0", "0g"}) {
    try {
      (void)EdUrlParser::toChar(bad);
      ADD_FAILURE() << "no throw for \"" << bad << "\"";
    } catch (int thrown) {
      EXPECT_EQ(thrown, 200) << bad;
    }
  }
  EXPECT_THROW((void)EdUrlParser::toChar(nullptr), int);
}

TEST(EdUrlParserTest, ToHexWritesTwoUpperCaseDigits) {
  char out[3] = {'x', 'x', '#'};
  EdUrlParser::toHex(out, '\xab');
  EXPECT_EQ(out[0], 'A');
  EXPECT_EQ(out[1], 'B');
  EXPECT_EQ(out[2], '#');
  EdUrlParser::toHex(out, '\n');
  EXPECT_EQ(std::string(out, 2), "0A");
}

// ---- URL and path ----

TEST(EdUrlParserTest, ParseUrlFillsEveryMember) {
  const auto url = parsed("s://h:80/p?q=1#f");
  EXPECT_EQ(url->mRawUrl, "s://h:80/p?q=1#f");
  EXPECT_EQ(url->scheme, "s");
  EXPECT_EQ(url->hostName, "h");
  EXPECT_EQ(url->port, "80");
  EXPECT_EQ(url->path, "/p");
  EXPECT_EQ(url->query, "q=1");
  EXPECT_EQ(url->fragment, "f");
}

TEST(EdUrlParserTest, LeadingSlashTakesFirstSegmentAsHost) {
  const auto url = parsed("/a/b");
  EXPECT_EQ(url->scheme, "");
  EXPECT_EQ(url->hostName, "a");
  EXPECT_EQ(url->path, "/b");
}

TEST(EdUrlParserTest, EmptyOrBlankUrlLeavesMembersEmpty) {
  for (const char* text : {"", "   "}) {
    const auto url = parsed(text);
    EXPECT_EQ(url->mRawUrl, text);
    EXPECT_EQ(url->scheme + url->hostName + url->port + url->path + url->query + url->fragment, "");
  }
}

TEST(EdUrlParserTest, NoColonLeavesMembersEmpty) {
  const auto url = parsed("host/path");
  EXPECT_EQ(url->scheme + url->hostName + url->port + url->path + url->query + url->fragment, "");
}

TEST(EdUrlParserTest, SchemeWithoutSlashesEndsAfterScheme) {
  const auto url = parsed("mailto:someone@example.org");
  EXPECT_EQ(url->scheme, "mailto");
  EXPECT_EQ(url->hostName + url->port + url->path + url->query + url->fragment, "");
}

TEST(EdUrlParserTest, LeadingBlanksBeforeScheme) {
  const auto url = parsed("  http://example.org");
  EXPECT_EQ(url->scheme, "http");
  EXPECT_EQ(url->hostName, "example.org");
  EXPECT_EQ(url->path, "");
}

TEST(EdUrlParserTest, QueryAndFragmentWithoutPath) {
  const auto url = parsed("h://host?x=1#top");
  EXPECT_EQ(url->hostName, "host");
  EXPECT_EQ(url->path, "");
  EXPECT_EQ(url->query, "x=1");
  EXPECT_EQ(url->fragment, "top");
}

TEST(EdUrlParserTest, PortEndsAtQuestionMark) {
  const auto url = parsed("h://host:8080?x");
  EXPECT_EQ(url->port, "8080");
  EXPECT_EQ(url->query, "x");
}

TEST(EdUrlParserTest, PortAtEndAndEmptyPort) {
  EXPECT_EQ(parsed("h://host:443")->port, "443");
  const auto url = parsed("h://host:");
  EXPECT_EQ(url->hostName, "host");
  EXPECT_EQ(url->port, "");
}

TEST(EdUrlParserTest, FragmentOnlyFollowsAQuery) {
  // Without "?", a "#" belongs to the host name or the path.
  EXPECT_EQ(parsed("s://h#f")->hostName, "h#f");
  const auto url = parsed("s://h/p#f");
  EXPECT_EQ(url->path, "/p#f");
  EXPECT_EQ(url->fragment, "");
}

TEST(EdUrlParserTest, ParseFillsMembersFromRawUrl) {
  EdUrlParser parser;
  parser.mRawUrl = "x://y/z";
  parser.parse();
  EXPECT_EQ(parser.scheme, "x");
  EXPECT_EQ(parser.hostName, "y");
  EXPECT_EQ(parser.path, "/z");
}

TEST(EdUrlParserTest, MembersStartEmptyAndDestructorIsVirtual) {
  static_assert(std::has_virtual_destructor_v<EdUrlParser>);
  const EdUrlParser parser;
  EXPECT_EQ(parser.mRawUrl + parser.scheme + parser.hostName + parser.port + parser.path +
                parser.query + parser.fragment,
            "");
}

TEST(EdUrlParserTest, ParsePathSplitsSegments) {
  std::vector<std::string> folders;
  EXPECT_EQ(EdUrlParser::parsePath(&folders, "/a/bc"), 2);
  EXPECT_EQ(folders, (std::vector<std::string>{"a", "bc"}));
}

TEST(EdUrlParserTest, ParsePathTrailingSlashAddsNothing) {
  std::vector<std::string> folders;
  EXPECT_EQ(EdUrlParser::parsePath(&folders, "/a/b/"), 2);
  EXPECT_EQ(folders, (std::vector<std::string>{"a", "b"}));
}

TEST(EdUrlParserTest, ParsePathKeepsEmptyInnerSegment) {
  std::vector<std::string> folders;
  EXPECT_EQ(EdUrlParser::parsePath(&folders, "/a//b"), 3);
  EXPECT_EQ(folders, (std::vector<std::string>{"a", "", "b"}));
}

TEST(EdUrlParserTest, ParsePathRefusesRelativeAndShortPaths) {
  for (const char* path : {"a/b", "/", "", "x"}) {
    std::vector<std::string> folders;
    EXPECT_EQ(EdUrlParser::parsePath(&folders, path), 0) << path;
    EXPECT_TRUE(folders.empty()) << path;
  }
}

TEST(EdUrlParserTest, ParsePathAppendsAndCountsAll) {
  std::vector<std::string> folders{"kept"};
  EXPECT_EQ(EdUrlParser::parsePath(&folders, "/x"), 2);
  EXPECT_EQ(folders, (std::vector<std::string>{"kept", "x"}));
}

}  // namespace
}  // namespace halvor::kelo
