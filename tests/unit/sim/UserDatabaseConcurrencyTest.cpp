#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "SimTestSupport.h"
#include "sim/SimTavel.h"
#include "tavelabi/Exceptions.h"

namespace halvor::sim {
namespace {

using kelo::test::HostWithUsers;
using tavelabi::CCRUD;
using tavelabi::Resource;
using tavelabi::ResourceValue;

// Logins, password changes, profile writes, renames and glob reads on several threads at once,
// as I/O threads and the plug-in make them: every login with the password that stays the same
// succeeds, and the user that is renamed back and forth keeps its password.
TEST(UserDatabaseConcurrencyTest, LoginsPasswordChangesAndRenamesAtOnceStayConsistent) {
  HostWithUsers h;
  constexpr int kRounds = 12;
  std::atomic<int> failedLogins{0};
  std::atomic<int> failedWrites{0};
  std::vector<std::thread> threads;
  threads.emplace_back([&] {
    for (int i = 0; i < kRounds; ++i) {
      try {
        const std::string session =
            h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                .values.at("sessionId")
                .getStringValue();
        Resource credentials("username", ResourceValue(std::string("viewer")));
        credentials.values["password"] = ResourceValue(std::string("viewer-pw"));
        h.run(CCRUD::Command, "/user/command/login", session, credentials);
      } catch (const std::exception&) {
        ++failedLogins;
      }
    }
  });
  threads.emplace_back([&] {
    for (int i = 0; i < kRounds; ++i) {
      try {
        Resource change("username", ResourceValue(std::string("viewer")));
        change.values["newPassword"] = ResourceValue(std::string("viewer-pw"));
        h.run(CCRUD::Command, "/user/command/changePassword", h.adminSession, change);
      } catch (const std::exception&) {
        ++failedWrites;
      }
    }
  });
  threads.emplace_back([&] {
    for (int i = 0; i < kRounds; ++i) {
      try {
        const bool away = i % 2 == 0;
        h.run(CCRUD::Update, away ? "/user/users/oper" : "/user/users/oper2", h.adminSession,
              Resource("username", ResourceValue(std::string(away ? "oper2" : "oper"))));
      } catch (const std::exception&) {
        ++failedWrites;
      }
    }
  });
  threads.emplace_back([&] {
    for (int i = 0; i < kRounds * 4; ++i) {
      try {
        h.run(CCRUD::Read, "/user/**", h.viewerSession);
        h.run(CCRUD::Update, "/user/users/viewer", h.viewerSession,
              Resource("firstName", ResourceValue(std::to_string(i))));
      } catch (const std::exception&) {
        ++failedWrites;
      }
    }
  });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(0, failedLogins.load());
  EXPECT_EQ(0, failedWrites.load());
  EXPECT_TRUE(h.host->peek("/user/users/oper").has_value());
  const std::string session = h.run(CCRUD::Command, "/session/command/newSession", h.adminSession)
                                  .values.at("sessionId")
                                  .getStringValue();
  Resource credentials("username", ResourceValue(std::string("oper")));
  credentials.values["password"] = ResourceValue(std::string("oper-pw"));
  EXPECT_NO_THROW(h.run(CCRUD::Command, "/user/command/login", session, credentials));
}

}  // namespace
}  // namespace halvor::sim
