#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tavelabi/GlobMatcher.h"

namespace halvor::tavelabi {
namespace {

struct GlobCase {
  const char* pattern;
  const char* text;
  bool matches;
};

// The dialect: plain characters, "*" within one segment, "**" across segments.
const std::vector<GlobCase> kCases = {
    // Plain text.
    {"/presets/active", "/presets/active", true},
    {"/presets/active", "/presets/activeX", false},
    {"/presets/active", "/presets/activ", false},
    {"/presets/active", "/Presets/active", false},
    {"", "", true},
    {"", "/", false},
    {"/", "", false},
    {"/a", "/a/", false},
    // One star: any run within a segment, the empty run included.
    {"*", "", true},
    {"*", "abc", true},
    {"*", "a/b", false},
    {"*", "/", false},
    {"/a/*", "/a/b", true},
    {"/a/*", "/a/", true},
    {"/a/*", "/a", false},
    {"/a/*", "/a/b/c", false},
    {"/a/*/c", "/a/b/c", true},
    {"/a/*/c", "/a//c", true},
    {"/a/*/c", "/a/b/x/c", false},
    {"/a/b*", "/a/b", true},
    {"/a/b*", "/a/bcd", true},
    {"/a/*d", "/a/bcd", true},
    {"/a/*d", "/a/bcde", false},
    {"/a/*b*", "/a/xbx", true},
    {"/a/*b*", "/a/xx", false},
    {"*/*", "a/b", true},
    {"*/*", "a/b/c", false},
    // Two or more stars: any run, "/" included, the empty run included.
    {"**", "", true},
    {"**", "/a/b/c", true},
    {"/**", "/a/b/c", true},
    {"/**", "/", true},
    {"/**", "", false},
    {"/a/**", "/a/b/c", true},
    {"/a/**", "/a/", true},
    {"/a/**", "/a", false},
    {"/a/**", "/b/c", false},
    {"/a/**/z", "/a/b/c/z", true},
    {"/a/**/z", "/a//z", true},
    {"/a/**/z", "/a/z", false},
    {"/a/**z", "/a/z", true},
    {"/a/**z", "/a/b/c/z", true},
    {"/a/**z", "/a/b/c/zx", false},
    {"***", "x/y", true},
    {"/**/meters/*", "/dev/1/meters/power", true},
    {"/**/meters/*", "/dev/1/meters/power/peak", false},
    {"/**/meters/**", "/dev/1/meters/power/peak", true},
    // Star characters in the text are plain characters to the text.
    {"/a/*", "/a/*", true},
    {"/**", "/**", true},
    {"/a/b", "/a/*", false},
};

TEST(GlobMatcherTest, Table) {
  for (const GlobCase& c : kCases) {
    EXPECT_EQ(GlobMatcher::globMatch(c.pattern, c.text), c.matches)
        << "pattern \"" << c.pattern << "\" text \"" << c.text << "\"";
    EXPECT_EQ(GlobMatcher(c.pattern).match(c.text), c.matches)
        << "matcher \"" << c.pattern << "\" text \"" << c.text << "\"";
  }
}

TEST(GlobMatcherTest, EveryPatternMatchesItsOwnText) {
  for (const GlobCase& c : kCases) {
    EXPECT_TRUE(GlobMatcher::globMatch(c.pattern, c.pattern)) << c.pattern;
    EXPECT_TRUE(GlobMatcher(c.pattern).match(c.pattern)) << c.pattern;
  }
  for (const char* pattern : {"/a/**/b/*/c*d**e", "*/**/*", "/scheduler/rules", "/x/*/"}) {
    EXPECT_TRUE(GlobMatcher::globMatch(pattern, pattern)) << pattern;
  }
}

// The dialect written down as plainly as possible, by recursion: slow, but obviously right for
// short inputs.
bool referenceMatch(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern[0] != '*') {
    return !text.empty() && text[0] == pattern[0] &&
           referenceMatch(pattern.substr(1), text.substr(1));
  }
  size_t stars = pattern.find_first_not_of('*');
  if (stars == std::string_view::npos) stars = pattern.size();
  const std::string_view rest = pattern.substr(stars);
  for (size_t taken = 0; taken <= text.size(); ++taken) {
    if (referenceMatch(rest, text.substr(taken))) return true;
    if (taken < text.size() && stars == 1 && text[taken] == '/') return false;
  }
  return false;
}

TEST(GlobMatcherTest, AgreesWithReferenceOnRandomShortInputs) {
  std::mt19937 random(20261121);
  const std::string alphabet = "ab/*";
  auto randomText = [&](size_t maxLength) {
    std::string text(random() % (maxLength + 1), ' ');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    return text;
  };
  for (int i = 0; i < 20000; ++i) {
    const std::string pattern = randomText(7);
    const std::string text = randomText(8);
    ASSERT_EQ(GlobMatcher::globMatch(pattern.c_str(), text.c_str()), referenceMatch(pattern, text))
        << "pattern \"" << pattern << "\" text \"" << text << "\"";
  }
}

TEST(GlobMatcherTest, NullArgumentsDoNotMatch) {
  EXPECT_FALSE(GlobMatcher::globMatch(nullptr, "/a"));
  EXPECT_FALSE(GlobMatcher::globMatch("/a", nullptr));
  EXPECT_FALSE(GlobMatcher::globMatch(nullptr, nullptr));
}

TEST(GlobMatcherTest, KeepsPattern) {
  GlobMatcher matcher("/a/**");
  EXPECT_EQ(matcher.getPattern(), "/a/**");
}

// A pattern of many stars against a long text that almost matches: a backtracking matcher
// would take exponential time here.
TEST(GlobMatcherTest, PathologicalStarsStayFast) {
  std::string singleStars;
  std::string doubleStars;
  for (int i = 0; i < 60; ++i) {
    singleStars += "*a";
    doubleStars += "**a";
  }
  singleStars += "*b";
  doubleStars += "**b";
  const std::string text(20000, 'a');
  const std::string pathText = std::string(5000, 'a') + "/" + std::string(5000, 'a');

  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(GlobMatcher::globMatch(singleStars.c_str(), text.c_str()));
  EXPECT_FALSE(GlobMatcher::globMatch(doubleStars.c_str(), text.c_str()));
  EXPECT_FALSE(GlobMatcher::globMatch(singleStars.c_str(), pathText.c_str()));
  EXPECT_TRUE(GlobMatcher::globMatch(doubleStars.c_str(), (text + "b").c_str()));
  EXPECT_TRUE(GlobMatcher::globMatch(singleStars.c_str(), (text + "b").c_str()));
  const auto elapsed = std::chrono::steady_clock::now() - start;
  // Generous for sanitizer builds; the backtracking alternative does not end in years.
  EXPECT_LT(elapsed, std::chrono::seconds(20));
}

TEST(GlobMatcherTest, ManyStarsAgainstEmptyText) {
  EXPECT_TRUE(GlobMatcher::globMatch(std::string(1000, '*').c_str(), ""));
  EXPECT_TRUE(GlobMatcher::globMatch("*/*", "/"));
  EXPECT_FALSE(GlobMatcher::globMatch("*a", ""));
}

}  // namespace
}  // namespace halvor::tavelabi
