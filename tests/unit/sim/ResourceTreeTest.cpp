#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "sim/ResourceTree.h"
#include "tavelabi/Exceptions.h"
#include "tavelabi/GlobMatcher.h"

namespace halvor::sim {
namespace {

using tavelabi::Resource;
using tavelabi::ResourceValue;

TEST(ResourceTreeTest, ReadOfMissingPathNamesThePath) {
  ResourceTree tree;
  try {
    tree.read("/nothing/here");
    FAIL() << "no exception";
  } catch (const tavelabi::NonExistentResourcePathException& error) {
    EXPECT_STREQ("No resource at /nothing/here", error.what());
  }
}

TEST(ResourceTreeTest, FindTextAnswersOnlyATextUnderTheKey) {
  ResourceTree tree;
  Resource user;
  user.values["role"] = ResourceValue(std::string("operator"));
  user.values["count"] = ResourceValue(3);
  tree.create("/user/users/oper", user);
  EXPECT_EQ(std::optional<std::string>("operator"), tree.findText("/user/users/oper", "role"));
  EXPECT_EQ(std::nullopt, tree.findText("/user/users/oper", "count"));
  EXPECT_EQ(std::nullopt, tree.findText("/user/users/oper", "missing"));
  EXPECT_EQ(std::nullopt, tree.findText("/user/users/nobody", "role"));
}

TEST(ResourceTreeTest, CreateReplacesAnEarlierResource) {
  ResourceTree tree;
  Resource first;
  first.values["a"] = ResourceValue(1);
  first.values["b"] = ResourceValue(2);
  tree.create("/x", first);
  Resource stored = tree.create("/x", Resource(ResourceValue(std::string("new"))));
  EXPECT_EQ(1u, stored.values.size());
  EXPECT_EQ("new", tree.read("/x").values.at("value").getStringValue());
  EXPECT_EQ(0u, tree.read("/x").values.count("a"));
}

TEST(ResourceTreeTest, UpdateMergesKeysAndAnswersTheResult) {
  ResourceTree tree;
  Resource first;
  first.values["a"] = ResourceValue(1);
  first.values["b"] = ResourceValue(2);
  tree.create("/x", first);
  Resource change;
  change.values["b"] = ResourceValue(20);
  change.values["c"] = ResourceValue(30);
  Resource result = tree.update("/x", change);
  EXPECT_EQ(1, result.values.at("a").getIntValue());
  EXPECT_EQ(20, result.values.at("b").getIntValue());
  EXPECT_EQ(30, result.values.at("c").getIntValue());
  EXPECT_EQ(3u, tree.read("/x").values.size());
}

TEST(ResourceTreeTest, UpdateAndDeleteOfMissingPathThrow) {
  ResourceTree tree;
  EXPECT_THROW(tree.update("/x", Resource()), tavelabi::NonExistentResourcePathException);
  EXPECT_THROW(tree.remove("/x"), tavelabi::NonExistentResourcePathException);
}

TEST(ResourceTreeTest, DeleteRemovesAndAnswersTheRemovedResource) {
  ResourceTree tree;
  tree.create("/x", Resource(ResourceValue(5)));
  EXPECT_EQ(5, tree.remove("/x").values.at("value").getIntValue());
  EXPECT_FALSE(tree.find("/x").has_value());
  EXPECT_EQ(0u, tree.size());
}

TEST(ResourceTreeTest, ListAnswersMatchingPathsInPathOrder) {
  ResourceTree tree;
  for (const char* path : {"/b/2", "/a/1", "/a/1/deep", "/b/1", "/a/2", "/c"}) {
    tree.create(path, Resource());
  }
  EXPECT_EQ((std::vector<std::string>{"/a/1", "/a/2"}), tree.list("/a/*"));
  EXPECT_EQ((std::vector<std::string>{"/a/1", "/a/1/deep", "/a/2"}), tree.list("/a/**"));
  EXPECT_EQ((std::vector<std::string>{"/a/1", "/a/1/deep", "/a/2", "/b/1", "/b/2", "/c"}),
            tree.list("**"));
  EXPECT_EQ((std::vector<std::string>{"/c"}), tree.list("/c"));
  EXPECT_EQ((std::vector<std::string>{"/b/1", "/b/2"}), tree.list("/b/*"));
  EXPECT_TRUE(tree.list("/d/*").empty());
}

TEST(ResourceTreeTest, ObserverSeesTheStoredResource) {
  ResourceTree tree;
  tree.create("/x", Resource("a", ResourceValue(1)));
  Resource seen;
  tree.update("/x", Resource("b", ResourceValue(2)),
              [&](const Resource& stored) { seen = stored; });
  EXPECT_EQ(2u, seen.values.size());
}

TEST(ResourceTreeTest, CreateIfAbsentLeavesAStoredResourceAlone) {
  ResourceTree tree;
  tree.create("/x", Resource(ResourceValue(1)));
  int observed = 0;
  EXPECT_FALSE(
      tree.createIfAbsent("/x", Resource(ResourceValue(2)), [&](const Resource&) { ++observed; }));
  EXPECT_EQ(1, tree.read("/x").values.at("value").getIntValue());
  EXPECT_TRUE(
      tree.createIfAbsent("/y", Resource(ResourceValue(3)), [&](const Resource&) { ++observed; }));
  EXPECT_EQ(3, tree.read("/y").values.at("value").getIntValue());
  EXPECT_EQ(1, observed);
}

TEST(ResourceTreeTest, ReadGlobMapsPathsToTheirValues) {
  ResourceTree tree;
  tree.create("/a/1", Resource(ResourceValue(1)));
  tree.create("/a/1/deep", Resource("k", ResourceValue(std::string("v"))));
  Resource one = tree.readGlob("/a/*");
  ASSERT_EQ(1u, one.values.size());
  EXPECT_EQ(1, one.values.at("/a/1").getMapValue().at("value").getIntValue());
  Resource all = tree.readGlob("/a/**");
  EXPECT_EQ("v", all.values.at("/a/1/deep").getMapValue().at("k").getStringValue());
  EXPECT_TRUE(tree.readGlob("/b/**").values.empty());
}

// The listing looks only at the paths that start with the glob's text before its first star;
// paths sorting just before, inside and just after that run must all be judged right.
TEST(ResourceTreeTest, ListAndReadGlobAgreeWithTheMatcherOnEveryPath) {
  ResourceTree tree;
  const std::vector<std::string> paths = {"/m",          "/m/",          "/m/a/list",  "/m/a/lis",
                                          "/m/a/list/x", "/m/b/c/list",  "/m-/a/list", "/m.a/list",
                                          "/ma/list",    "/l/a/list",    "/n/a/list",  "/m/list",
                                          "/m/a/b/list", "/m/\xff/list", "list"};
  for (const std::string& path : paths) tree.create(path, Resource());
  for (const std::string glob : {"/m/**/list", "/m/*/list", "/m**", "/m/*", "*list", "**",
                                 "/m/a/list", "/m/", "/m*/list", "/z/**"}) {
    std::vector<std::string> expected;
    for (const std::string& path : tree.list("**")) {
      if (tavelabi::GlobMatcher::globMatch(glob.c_str(), path.c_str())) expected.push_back(path);
    }
    EXPECT_EQ(expected, tree.list(glob)) << glob;
    EXPECT_EQ(expected.size(), tree.readGlob(glob).values.size()) << glob;
  }
}

TEST(ResourceTreeTest, ReadsOfOnePathFollowEveryCreateAndDeleteInAnyOrder) {
  ResourceTree tree;
  std::map<std::string, int> expected;  // the path's last stored "n", or absent
  std::mt19937 random(20261123);
  for (int step = 0; step < 4000; ++step) {
    const std::string path = "/m/" + std::to_string(random() % 40) + "/meter";
    const int n = step;
    switch (random() % 4) {
      case 0:
        tree.create(path, Resource("n", ResourceValue(n)));
        expected[path] = n;
        break;
      case 1:
        if (tree.createIfAbsent(path, Resource("n", ResourceValue(n)))) {
          EXPECT_EQ(0U, expected.count(path)) << path;
          expected[path] = n;
        } else {
          EXPECT_EQ(1U, expected.count(path)) << path;
        }
        break;
      case 2:
        if (expected.count(path) != 0) {
          EXPECT_EQ(expected[path], tree.remove(path).values.at("n").getIntValue()) << path;
          expected.erase(path);
        } else {
          EXPECT_THROW(tree.remove(path), tavelabi::NonExistentResourcePathException) << path;
        }
        break;
      default:
        if (expected.count(path) != 0) {
          tree.update(path, Resource("n", ResourceValue(n)));
          expected[path] = n;
        } else {
          EXPECT_THROW(tree.update(path, Resource("n", ResourceValue(n))),
                       tavelabi::NonExistentResourcePathException)
              << path;
        }
        break;
    }
    for (int i = 0; i < 40; ++i) {
      const std::string probe = "/m/" + std::to_string(i) + "/meter";
      auto found = expected.find(probe);
      if (found == expected.end()) {
        ASSERT_EQ(std::nullopt, tree.find(probe)) << probe;
        ASSERT_THROW(tree.read(probe), tavelabi::NonExistentResourcePathException) << probe;
      } else {
        ASSERT_EQ(found->second, tree.read(probe).values.at("n").getIntValue()) << probe;
        ASSERT_EQ(ResourceValue(found->second), tree.findValue(probe, "n")) << probe;
      }
    }
    ASSERT_EQ(expected.size(), tree.size());
  }
  std::vector<std::string> paths;
  for (const auto& [path, n] : expected) paths.push_back(path);
  EXPECT_EQ(paths, tree.list("**"));
}

TEST(ResourceTreeTest, TheGenerationGrowsWithEveryWriteAndOnlyWithWrites) {
  ResourceTree tree;
  std::uint64_t last = tree.generation();
  const auto grew = [&] {
    const std::uint64_t now = tree.generation();
    const bool grown = now > last;
    last = now;
    return grown;
  };
  tree.create("/a", Resource("n", ResourceValue(1)));
  EXPECT_TRUE(grew());
  tree.read("/a");
  tree.find("/b");
  tree.list("**");
  EXPECT_FALSE(tree.createIfAbsent("/a", Resource()));
  EXPECT_FALSE(grew());
  EXPECT_TRUE(tree.createIfAbsent("/b", Resource()));
  EXPECT_TRUE(grew());
  tree.update("/a", Resource("n", ResourceValue(2)));
  EXPECT_TRUE(grew());
  EXPECT_THROW(tree.update("/c", Resource()), tavelabi::NonExistentResourcePathException);
  EXPECT_FALSE(grew());
  tree.remove("/b");
  EXPECT_TRUE(grew());
  EXPECT_THROW(tree.remove("/b"), tavelabi::NonExistentResourcePathException);
  EXPECT_FALSE(grew());
  EXPECT_NE(tree.identity(), ResourceTree().identity());
}

}  // namespace
}  // namespace halvor::sim
