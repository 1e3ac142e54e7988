// Runs the real tavel-sim program as a child process with the test plug-in.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace halvor::sim {
namespace {

using Clock = std::chrono::steady_clock;

std::string readFile(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// The process id in the name: ctest runs each test case as a process of its own, several at once.
std::string writeFile(const std::string& name, const std::string& text) {
  std::string path = ::testing::TempDir() + std::to_string(::getpid()) + "-" + name;
  std::ofstream(path) << text;
  return path;
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) result.push_back(line);
  return result;
}

// tavel-sim with its output in files; killed at the end of the test if it still runs.
class SimProcess {
 public:
  explicit SimProcess(std::vector<std::string> args) {
    std::string tag = std::to_string(getpid()) + "-" + std::to_string(counter_++);
    out_ = ::testing::TempDir() + "tavel-sim-" + tag + ".out";
    err_ = ::testing::TempDir() + "tavel-sim-" + tag + ".err";
    args.insert(args.begin(), TAVEL_SIM_PATH);
    std::vector<char*> argv;
    for (auto& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    EXPECT_EQ(0, posix_spawn(&pid_, TAVEL_SIM_PATH, &actions, nullptr, argv.data(), environ));
    posix_spawn_file_actions_destroy(&actions);
  }

  ~SimProcess() {
    if (pid_ > 0 && !exited_) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    std::remove(out_.c_str());
    std::remove(err_.c_str());
  }

  // Waits until standard output holds the text; false after the timeout or when it exited.
  bool waitForOutput(const std::string& text,
                     std::chrono::seconds timeout = std::chrono::seconds(20)) {
    auto deadline = Clock::now() + timeout;
    while (Clock::now() < deadline) {
      if (out().find(text) != std::string::npos) return true;
      if (!exited_ && waitpid(pid_, &status_, WNOHANG) == pid_) exited_ = true;
      if (exited_) return out().find(text) != std::string::npos;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
  }

  // The exit status, or -1 when it did not end within the timeout.
  int waitForExit(std::chrono::seconds timeout = std::chrono::seconds(20)) {
    auto deadline = Clock::now() + timeout;
    while (!exited_ && Clock::now() < deadline) {
      if (waitpid(pid_, &status_, WNOHANG) == pid_) {
        exited_ = true;
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    if (!exited_) return -1;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
  }

  void signal(int number) const { kill(pid_, number); }
  std::string out() const { return readFile(out_); }
  std::string err() const { return readFile(err_); }

 private:
  static inline int counter_ = 0;
  pid_t pid_ = -1;
  int status_ = 0;
  bool exited_ = false;
  std::string out_;
  std::string err_;
};

std::string demoFixture() { return std::string(SIM_FIXTURE_DIR) + "/demo.json"; }

std::string pluginConfig(const std::string& extra = "") {
  return writeFile("tavel-sim-plugin-config.json",
                   R"({"UserName": "kelo", "Password": "kelo-plugin-secret")" + extra + "}");
}

std::vector<std::string> standardArgs(const std::string& config) {
  return {"--plugin", TEST_PLUGIN_PATH, "--log-config", "log.conf",    "--config",
          config,     "--fixture",      demoFixture(),  "--plugin-id", "5"};
}

long numberAfter(const std::string& text, const std::string& key) {
  std::size_t at = text.find(key);
  if (at == std::string::npos) return -1;
  return std::stol(text.substr(at + key.size()));
}

TEST(TavelSimProgramTest, RunsThePluginAndStopsCleanlyOnSigterm) {
  std::string config = pluginConfig();
  SimProcess sim(standardArgs(config));
  ASSERT_TRUE(sim.waitForOutput("[status] TestPlugin: Ok OK\n")) << sim.out() << sim.err();
  // The loop starts right after init reported Ok; its time runs from there to the exit, so that
  // a slow start under a loaded machine does not count.
  auto loopSeen = Clock::now();
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  sim.signal(SIGTERM);
  EXPECT_EQ(0, sim.waitForExit());
  double seconds = std::chrono::duration<double>(Clock::now() - loopSeen).count();
  std::string out = sim.out();
  EXPECT_NE(std::string::npos, out.find("demo user admin (administrator) password admin-demo"));
  EXPECT_NE(std::string::npos, out.find("demo user kelo (administrator) password"));
  EXPECT_NE(std::string::npos,
            out.find("test-plugin: init id=5 log=log.conf config=" + config + "\n"));
  EXPECT_NE(std::string::npos, out.find("[status] TestPlugin: Initializing Initializing\n"));
  EXPECT_NE(std::string::npos, out.find("[status] TestPlugin: Stopped stopped produce="));
  long produced = numberAfter(out, "Stopped stopped produce=");
  long consumed =
      numberAfter(out, "Stopped stopped produce=" + std::to_string(produced) + " consume=");
  EXPECT_EQ(produced, consumed);
  double rate = static_cast<double>(produced) / seconds;
  EXPECT_GE(rate, 30.0) << produced << " calls in " << seconds << " s";
  EXPECT_LE(rate, 200.0) << produced << " calls in " << seconds << " s";
  EXPECT_NE(std::string::npos, out.find("test-plugin: demo counter ")) << out;
  EXPECT_EQ("", sim.err());
}

TEST(TavelSimProgramTest, SigintStopsAsWell) {
  SimProcess sim(standardArgs(pluginConfig()));
  ASSERT_TRUE(sim.waitForOutput("[status] TestPlugin: Ok OK\n")) << sim.out() << sim.err();
  sim.signal(SIGINT);
  EXPECT_EQ(0, sim.waitForExit());
  EXPECT_NE(std::string::npos, sim.out().find("[status] TestPlugin: Stopped"));
}

TEST(TavelSimProgramTest, PreMadeSessionsAndNoDemoModels) {
  std::vector<std::string> args = standardArgs(pluginConfig(R"(, "probeSession": "S-42")"));
  for (const char* extra : {"--session", "S-42=operator", "--no-demo-models"}) {
    args.push_back(extra);
  }
  SimProcess sim(args);
  ASSERT_TRUE(sim.waitForOutput("[status] TestPlugin: Ok OK\n")) << sim.out() << sim.err();
  sim.signal(SIGTERM);
  EXPECT_EQ(0, sim.waitForExit());
  std::string out = sim.out();
  EXPECT_NE(std::string::npos, out.find("test-plugin: session S-42 user operator\n")) << out;
  EXPECT_NE(std::string::npos,
            out.find("test-plugin: no demo counter: No resource at /demo/counter"))
      << out;
}

// The demo model counts on from what a fixture seeded at its path.
TEST(TavelSimProgramTest, ModelsKeepWhatAFixtureSeeded) {
  std::string seeded = writeFile("tavel-sim-counter.json",
                                 R"({"resources": {"/demo/counter": {"value": {"int": 500}}}})");
  std::vector<std::string> args = standardArgs(pluginConfig());
  args.push_back("--fixture");
  args.push_back(seeded);
  SimProcess sim(args);
  ASSERT_TRUE(sim.waitForOutput("[status] TestPlugin: Ok OK\n")) << sim.out() << sim.err();
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  sim.signal(SIGTERM);
  EXPECT_EQ(0, sim.waitForExit());
  long counter = numberAfter(sim.out(), "test-plugin: demo counter ");
  EXPECT_GE(counter, 500) << sim.out();
  EXPECT_LE(counter, 530) << sim.out();
}

// Without models, every value is the fixture's.
TEST(TavelSimProgramTest, NoDemoModelsLeavesTheFixturesValuesAsTheyAre) {
  std::string seeded = writeFile("tavel-sim-counter-only.json",
                                 R"({"resources": {"/demo/counter": {"value": {"int": 7}}}})");
  std::vector<std::string> args = standardArgs(pluginConfig());
  for (const std::string& extra :
       {std::string("--fixture"), seeded, std::string("--no-demo-models")}) {
    args.push_back(extra);
  }
  SimProcess sim(args);
  ASSERT_TRUE(sim.waitForOutput("[status] TestPlugin: Ok OK\n")) << sim.out() << sim.err();
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  sim.signal(SIGTERM);
  EXPECT_EQ(0, sim.waitForExit());
  EXPECT_NE(std::string::npos, sim.out().find("test-plugin: demo counter 7\n")) << sim.out();
}

// Bad input ends with one line on standard error.
struct BadInput {
  std::vector<std::string> args;
  int status;
  std::string line;
};

void expectOneLine(const BadInput& input) {
  SimProcess sim(input.args);
  EXPECT_EQ(input.status, sim.waitForExit());
  std::vector<std::string> errLines = lines(sim.err());
  ASSERT_EQ(1u, errLines.size()) << sim.err();
  EXPECT_EQ(0u, errLines[0].find(input.line)) << errLines[0];
}

TEST(TavelSimProgramTest, FixtureThatIsNotJson) {
  std::string bad = writeFile("tavel-sim-bad.json", "{\"users\": [");
  std::vector<std::string> args = standardArgs(pluginConfig());
  args.push_back("--fixture");
  args.push_back(bad);
  expectOneLine({args, 2, "tavel-sim: bad fixture " + bad + ": not valid JSON: "});
}

TEST(TavelSimProgramTest, PluginThatDoesNotLoad) {
  std::vector<std::string> args = standardArgs(pluginConfig());
  args[1] = "/nonexistent/libx.so";
  expectOneLine({args, 3, "tavel-sim: cannot load plug-in /nonexistent/libx.so: "});
}

TEST(TavelSimProgramTest, PluginWithoutEntryPoint) {
  std::vector<std::string> args = standardArgs(pluginConfig());
  args[1] = INCOMPLETE_PLUGIN_PATH;
  expectOneLine({args, 3,
                 std::string("tavel-sim: plug-in ") + INCOMPLETE_PLUGIN_PATH +
                     " lacks the entry point produce: "});
}

TEST(TavelSimProgramTest, SessionForUnknownUser) {
  std::vector<std::string> args = standardArgs(pluginConfig());
  args.push_back("--session");
  args.push_back("S=ghost");
  expectOneLine({args, 2, "tavel-sim: no user ghost for session S"});
}

TEST(TavelSimProgramTest, UnknownOption) {
  expectOneLine({{"--frobnicate", "1"}, 2, "tavel-sim: unknown option --frobnicate"});
}

TEST(TavelSimProgramTest, HelpListsTheOptions) {
  SimProcess sim({"--help"});
  EXPECT_EQ(0, sim.waitForExit());
  EXPECT_NE(std::string::npos, sim.out().find("--session ID=USER"));
  EXPECT_NE(std::string::npos, sim.out().find("--no-demo-models"));
}

}  // namespace
}  // namespace halvor::sim
