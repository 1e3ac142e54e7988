#include <gtest/gtest.h>

#include "OriginCheck.h"

using halvor::kelo::web::OriginCheck;

namespace {

TEST(OriginCheckTest, ARequestWithoutOriginIsServedAsBefore) {
  EXPECT_TRUE(OriginCheck::allows("", "tx.example:7000", {}));
}

TEST(OriginCheckTest, AnOriginOfTheHostsOwnSiteIsServed) {
  EXPECT_TRUE(OriginCheck::allows("http://tx.example:7000", "tx.example:7000", {}));
  EXPECT_TRUE(OriginCheck::allows("https://TX.example:8000", "tx.example:8000", {}));
  EXPECT_TRUE(OriginCheck::allows("http://127.0.0.1:7000", "127.0.0.1:7000", {}));
}

TEST(OriginCheckTest, TheSchemesDefaultPortMayBeWrittenOrLeftOut) {
  EXPECT_TRUE(OriginCheck::allows("http://tx.example", "tx.example:80", {}));
  EXPECT_TRUE(OriginCheck::allows("https://tx.example:443", "tx.example", {}));
  EXPECT_FALSE(OriginCheck::allows("https://tx.example", "tx.example:80", {}));
}

TEST(OriginCheckTest, AnOriginOfAnotherSiteIsRefused) {
  EXPECT_FALSE(OriginCheck::allows("http://evil.example", "tx.example:7000", {}));
  EXPECT_FALSE(OriginCheck::allows("http://tx.example:7001", "tx.example:7000", {}));
  EXPECT_FALSE(OriginCheck::allows("http://tx.example.evil.example:7000", "tx.example:7000", {}));
  EXPECT_FALSE(OriginCheck::allows("http://evil.example", "", {}));
}

TEST(OriginCheckTest, NullAndTextsThatAreNoOriginAreRefused) {
  EXPECT_FALSE(OriginCheck::allows("null", "tx.example", {}));
  EXPECT_FALSE(OriginCheck::allows("tx.example", "tx.example", {}));
  EXPECT_FALSE(OriginCheck::allows("http://tx.example/page", "tx.example", {}));
}

TEST(OriginCheckTest, ATrustedOriginOfAnotherSiteIsServed) {
  const std::vector<std::string> trusted{"https://console.example/"};
  EXPECT_TRUE(OriginCheck::allows("https://console.example", "tx.example:8000", trusted));
  EXPECT_FALSE(OriginCheck::allows("http://console.example", "tx.example:8000", trusted));
  EXPECT_TRUE(OriginCheck::allows("http://anything.example", "tx.example", {"*"}));
  EXPECT_TRUE(OriginCheck::allows("null", "tx.example", {"*"}));
}

}  // namespace
