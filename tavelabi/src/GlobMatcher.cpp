#include "tavelabi/GlobMatcher.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace halvor::tavelabi {

namespace {

enum class TokenKind { Literal, SegmentStar, AnyStar };

struct Token {
  TokenKind kind;
  char literal;
};

// One star is a run within a segment; two or more stars in a row are a run across segments.
std::vector<Token> tokenize(std::string_view pattern) {
  std::vector<Token> tokens;
  tokens.reserve(pattern.size());
  size_t i = 0;
  while (i < pattern.size()) {
    if (pattern[i] != '*') {
      tokens.push_back({TokenKind::Literal, pattern[i]});
      ++i;
      continue;
    }
    size_t stars = 0;
    while (i < pattern.size() && pattern[i] == '*') {
      ++stars;
      ++i;
    }
    tokens.push_back({stars == 1 ? TokenKind::SegmentStar : TokenKind::AnyStar, '*'});
  }
  return tokens;
}

// A star may match the empty run, so the state after it is reached without a character.
void closeOverEmptyRuns(const std::vector<Token>& tokens, std::vector<char>& states) {
  for (size_t i = 0; i < tokens.size(); ++i) {
    if (states[i] && tokens[i].kind != TokenKind::Literal) states[i + 1] = 1;
  }
}

// Runs the pattern as a set of states over the text, one character at a time: time
// pattern length times text length, memory pattern length, no backtracking.
bool matchTokens(const std::vector<Token>& tokens, std::string_view text) {
  std::vector<char> current(tokens.size() + 1, 0);
  std::vector<char> next(tokens.size() + 1, 0);
  current[0] = 1;
  closeOverEmptyRuns(tokens, current);
  for (char c : text) {
    std::fill(next.begin(), next.end(), 0);
    bool anyActive = false;
    for (size_t i = 0; i < tokens.size(); ++i) {
      if (!current[i]) continue;
      switch (tokens[i].kind) {
        case TokenKind::Literal:
          if (tokens[i].literal == c) next[i + 1] = 1;
          break;
        case TokenKind::SegmentStar:
          if (c != '/') next[i] = 1;
          break;
        case TokenKind::AnyStar:
          next[i] = 1;
          break;
      }
      anyActive = anyActive || next[i] || next[i + 1];
    }
    if (!anyActive) return false;
    closeOverEmptyRuns(tokens, next);
    std::swap(current, next);
  }
  return current[tokens.size()] != 0;
}

}  // namespace

GlobMatcher::GlobMatcher(std::string pattern) : pattern_(std::move(pattern)) {}

bool GlobMatcher::match(const std::string& text) const { return matches(pattern_, text); }

bool GlobMatcher::globMatch(const char* pattern, const char* text) {
  if (pattern == nullptr || text == nullptr) return false;
  return matches(pattern, text);
}

// The patterns met most, a plain path and "**" (every path), are answered without the state
// machine and its allocations, and so is every text that lacks the pattern's literal start
// (before the first star) or end (after the last one), which every match has.
bool GlobMatcher::matches(std::string_view pattern, std::string_view text) {
  const size_t firstStar = pattern.find('*');
  if (firstStar == std::string_view::npos) return pattern == text;
  if (pattern.size() >= 2 && pattern.find_first_not_of('*') == std::string_view::npos) return true;
  const std::string_view head = pattern.substr(0, firstStar);
  const std::string_view tail = pattern.substr(pattern.rfind('*') + 1);
  if (text.substr(0, head.size()) != head) return false;
  if (text.size() < tail.size() || text.substr(text.size() - tail.size()) != tail) return false;
  return matchTokens(tokenize(pattern), text);
}

}  // namespace halvor::tavelabi
