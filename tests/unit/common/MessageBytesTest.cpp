#include <gtest/gtest.h>

#include <string>

#include "NestedResources.h"
#include "kelo/common/MessageBytes.h"

namespace halvor::kelo {
namespace {

using test::NestedResources;

TEST(MessageBytesTest, EqualMessagesAreEqualBytesWhateverTheirInsertionOrder) {
  const std::string forward =
      MessageBytes::of(NestedResources::keyed("abcdefghijklmnopqrstuvwxyz"));
  const std::string backward =
      MessageBytes::of(NestedResources::keyed("zyxwvutsrqponmlkjihgfedcba"));
  const std::string scrambled =
      MessageBytes::of(NestedResources::keyed("qwertyuiopasdfghjklzxcvbnm"));
  EXPECT_EQ(forward, backward);
  EXPECT_EQ(forward, scrambled);
}

TEST(MessageBytesTest, TheBytesParseAsTheMessage) {
  const protobuf::Resource message = NestedResources::keyed("mapkeys");
  protobuf::Resource parsed;
  ASSERT_TRUE(parsed.ParseFromString(MessageBytes::of(message)));
  EXPECT_EQ(parsed.values_size(), message.values_size());
  EXPECT_EQ(parsed.values().at("nested").mapvalue().at("k").intvalue().value(), 'k');
  EXPECT_EQ(parsed.ByteSizeLong(), message.ByteSizeLong());
}

TEST(MessageBytesTest, AnEmptyMessageIsNoBytes) {
  EXPECT_EQ(MessageBytes::of(protobuf::Resource()), "");
}

}  // namespace
}  // namespace halvor::kelo
