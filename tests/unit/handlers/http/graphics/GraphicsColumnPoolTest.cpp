// The decoders' large columns reuse the blocks their thread gave back; small ones and very large
// ones go straight back to the heap.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "kelo/handlers/http/graphics/GraphicsColumnPool.h"
#include "kelo/handlers/http/graphics/GraphicsColumns.h"

namespace halvor::kelo::test {
namespace {

using Pool = GraphicsColumnPool;

TEST(GraphicsColumnPoolTest, ALargeBlockGivenBackIsTakenAgainByTheSameThread) {
  void* first = Pool::take(512 * 1024);
  std::memset(first, 1, 512 * 1024);
  Pool::give(first, 512 * 1024);
  // A smaller request that the kept block holds gets that block.
  void* second = Pool::take(300 * 1024);
  EXPECT_EQ(second, first);
  Pool::give(second, 300 * 1024);
}

TEST(GraphicsColumnPoolTest, AKeptBlockTooSmallForTheRequestIsNotHandedOut) {
  void* small = Pool::take(Pool::kSmallest);
  Pool::give(small, Pool::kSmallest);
  void* larger = Pool::take(Pool::kSmallest * 2);
  EXPECT_NE(larger, small);
  std::memset(larger, 2, Pool::kSmallest * 2);
  Pool::give(larger, Pool::kSmallest * 2);
}

TEST(GraphicsColumnPoolTest, AnotherThreadDoesNotGetTheBlocksOfThisOne) {
  void* mine = Pool::take(256 * 1024);
  Pool::give(mine, 256 * 1024);
  void* theirs = nullptr;
  std::thread other([&] {
    theirs = Pool::take(256 * 1024);
    std::memset(theirs, 3, 256 * 1024);
    Pool::give(theirs, 256 * 1024);
  });
  other.join();
  EXPECT_NE(theirs, mine);
  // This thread's block is still there for it.
  void* again = Pool::take(256 * 1024);
  EXPECT_EQ(again, mine);
  Pool::give(again, 256 * 1024);
}

TEST(GraphicsColumnPoolTest, AColumnDecodedAgainWritesIntoTheSameStorage) {
  const double* firstStorage = nullptr;
  {
    PointColumns columns;
    columns.resize(65536);
    firstStorage = columns.x.data();
  }
  PointColumns again;
  again.resize(65536);
  // The two columns of 512 kB each come back from the thread's kept blocks.
  EXPECT_TRUE(again.x.data() == firstStorage || again.y.data() == firstStorage);
}

}  // namespace
}  // namespace halvor::kelo::test
