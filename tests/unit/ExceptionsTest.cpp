#include <gtest/gtest.h>

#include "kelo/Exceptions.h"

namespace halvor::kelo {
namespace {

TEST(ExceptionsTest, EachTextIsMadeFromItsArgument) {
  EXPECT_STREQ(InvalidJson("Missing '}'").what(), "Invalid Json: Missing '}'.");
  EXPECT_STREQ(RequestMissingFormData("file").what(), "Request missing form data: file.");
  EXPECT_STREQ(RequestMissingQueryParameter("path").what(),
               "Request missing query parameter: path.");
  EXPECT_STREQ(BadPathException("/x/y").what(), "Unknown path: /x/y");
}

TEST(ExceptionsTest, AllAreStandardExceptions) {
  try {
    throw RequestMissingQueryParameter("guid");
  } catch (const std::exception& e) {
    EXPECT_STREQ(e.what(), "Request missing query parameter: guid.");
  }
}

}  // namespace
}  // namespace halvor::kelo
