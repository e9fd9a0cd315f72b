#include <unistd.h>

#include "EndToEndTest.h"

namespace {

/// An installed launcher: a copy in the directory "bin" that reads ini files
/// in "ini", and a stand-in for the inventory library beside it.
class Installation : public EndToEndTest {
protected:
    Installation()
    {
        install(LAUNCHER_WITH_LOCAL_INI, "bin/launcher");
        install(FAKE_INVENTORY, "bin/libinventory.so");
    }
    void install(const std::string& file, const std::string& as) const
    {
        std::filesystem::create_directories((dir.path() / as).parent_path());
        std::filesystem::copy(file, dir / as);
    }
    /// A start that names nothing but the instance, whose directory it runs in.
    [[nodiscard]] LauncherRun startInstance() const
    {
        return launcher("start --instance " + dir.path().string()).program(dir / "bin/launcher");
    }
    /// Writes a launcher.yml for a service with the steps of `start`, and
    /// further `entries`.
    void configure(const std::string& start, const std::string& entries = "") const
    {
        dir.write("bin/launcher.yml", R"(launcher-parameters:
  service-name: hello
  class-path: )" SERVICE_JAR R"(
  main-class: service.Service
  pid-file: ${instance.root}/service.pid
  log-file: ${launcher.dir}/../launcher.log
  jvm-opts:
  - -XX:-UsePerfData
  - -Dstop=release
  - -Dstart=)" + start + "\n" + entries);
    }
};

class ConfigurationE2eTest : public Installation, public testing::WithParamInterface<Jdk> {
protected:
    [[nodiscard]] LauncherRun startInstance() const
    {
        return Installation::startInstance().withJvm();
    }
    const std::string javaHome =
        std::filesystem::path(GetParam().second).parent_path().parent_path().parent_path();
};
FOR_EACH_JDK(ConfigurationE2eTest);

TEST_P(ConfigurationE2eTest, RunsAServiceFromTheFileAlone)
{
    configure("report,ready,wait", "  java-home: " + javaHome + R"(
  work-dir: ${instance.root}/work
  main-class-args:
  - имя и ${launcher.arch}
  - --daemon
  minimal-java-version: 17
  banner:
    default: Hello runs
    ru: Служба работает
)");
    std::filesystem::create_directory(dir / "work");
    const LauncherProcess service = startInstance().start();
    ASSERT_TRUE(waitUntil([this] { return exists("work/ready"); }));
    EXPECT_EQ(savedPid(), service.pid);
    kill(service.pid, SIGUSR1);
    const LauncherResult result = service.waitForExit();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "Hello runs\n");
    EXPECT_EQ(content("work/start.report"),
              "launcher-start-thread\ndaemon Boolean 'false'\ninstance.root Path '" +
                  dir.path().string() +
                  "'\nquiet Boolean 'false'\narg имя и x86-64\narg --daemon\n");
    EXPECT_TRUE(log().records.at(0).starts_with("INFO Launcher started. version=3.11.1+4, time=2"));
    EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
    EXPECT_FALSE(exists("service.pid"));

    // Only the file knows of the PID file: whoever kills the service removes the one that it knows.
    configure("ready,until:never", "  java-home: " + javaHome + "\n  banner:\n    ru: Да\n");
    const LauncherProcess stuck = startReady(startInstance().env("LC_ALL", "ru_RU.UTF-8"));
    EXPECT_EQ(launcher("stop --pidfile service.pid --timeout 100").run().err,
              "Launcher with PID=" + std::to_string(stuck.pid) +
                  " was forced to stop and its PID-file was removed\n");
    EXPECT_EQ(stuck.waitForExit().out, "Да\n");
}

TEST_P(ConfigurationE2eTest, FindsItsJavaHome)
{
    configure("report");
    const auto run = [this](const LauncherRun& launcherRun, const std::string& record,
                            const std::string& logName = "launcher.log") {
        std::filesystem::remove(dir / "start.report");
        const LauncherResult result = launcherRun.run();
        EXPECT_EQ(result.status, 0) << result.out << result.err;
        EXPECT_TRUE(exists("start.report"));
        EXPECT_TRUE(LauncherLog(dir / logName).holds("INFO " + record)) << record;
    };
    run(startInstance().env("JAVA_HOME", javaHome),
        "Using a JAVA_HOME value from a system environment JavaHome=" + javaHome);
    run(startInstance().env("FAKE_INVENTORY_PATH", javaHome),
        "Launcher have found Java in Inventory. path=" + javaHome);
    dir.write("ini/other", "# Its Java\r\nJAVA_HOME=" + javaHome + "\r\nJAVA_OPT=-Xmx99m\r\n");
    run(startInstance().args("--servicename other --clog other.log"),
        "Using JAVA_HOME from service ini file --javahome parameter.", "other.log");
    const LauncherLog log(dir / "other.log");
    EXPECT_TRUE(log.holds("INFO JVM argument JVM argument=-Xmx99m"));
    EXPECT_FALSE(log.holds("INFO Inventory library is initialised"));  // nobody asked it
}

TEST_P(ConfigurationE2eTest, StartsTheExampleService)
{
    // As installed, but with a free port and a Java that is here.
    const auto installExample = [this](const std::string& file, const std::string& as,
                                       const std::string& words, const std::string& instead) {
        std::string text = readText(std::filesystem::path(EXAMPLE_SERVICE) / file);
        ASSERT_NE(text.find(words), std::string::npos) << file;
        dir.write(as, text.replace(text.find(words), words.size(), instead));
    };
    installExample("launcher.yml", "bin/launcher.yml", "- 8080 ", "- 0 ");
    installExample("ini/hello", "ini/hello", "JAVA_HOME=/usr/lib/jvm/default-java",
                   "JAVA_HOME=" + javaHome);
    install(EXAMPLE_JAR, "lib/hello-service.jar");
    const LauncherProcess service = startInstance().args("--cout out").start();
    EXPECT_TRUE(
        waitUntil([this] { return content("out").find("Listening") != std::string::npos; }));
    const std::string banner = "The service hello has started in " + dir.path().string() + "\n";
    EXPECT_TRUE(content("out").starts_with(banner)) << content("out");
    EXPECT_EQ(content("hello.pid"), std::to_string(service.pid));
    expectEndAfter(SIGUSR1, service, 0);
    EXPECT_NE(content("hello.log").find("JVM argument=-Xmx128m"), std::string::npos);
}

using ConfigurationFailureE2eTest = Installation;

TEST_F(ConfigurationFailureE2eTest, NamesWhatIsWrongWithTheFileAndStartsNothing)
{
    const std::string file = dir / "bin/launcher.yml";
    const std::string head = "launcher-parameters:\n",
                      reading = "Error reading file '" + file + "'. ";
    const std::tuple<std::string, int, std::string> cases[] = {
        {head + "  no-such-key: x\n", 2, reading + "Unknown field 'no-such-key'."},
        {head + "  - x\n", 2, reading + "Wrong structure."},
        {head + "  minimal-java-version: 1.8\n", 2, reading + "Unknown Java version '1.8'."},
        {head + "  log-file launcher.log\n", 2,
         "Error parsing launcher.yml: key expected. Error at file offset 44."},
        {head + "  work-dir: ${env.path}\n", 2,
         reading + "The value of the variable ${env.path} contains the variable itself: "
                   "'/bin:${env.path}'."},
        {std::string(10 * 1024 * 1024 + 1, '\n'), 20, "File '" + file + "' is too big"},
    };
    for (const auto& [text, status, message] : cases) {
        dir.write("bin/launcher.yml", text);
        LauncherRun run = startInstance().env("PATH", "/bin:${env.path}");
        const LauncherResult result = run.args("--pidfile service.pid --clog launcher.log").run();
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.out, message + "\n");
        EXPECT_EQ(result.err, "");
        EXPECT_TRUE(log().last().starts_with("INFO Mode is Start. main class args:"));
    }
    // A stop reads no file.
    LauncherRun stop = launcher("stop --pid 999999999 --clog launcher.log");
    EXPECT_EQ(stop.program(dir / "bin/launcher").run().status, 11);
    EXPECT_TRUE(log().holds("INFO No launcher parameters file read. fileName="));
    EXPECT_TRUE(
        log().holds("INFO A stop request was sent to another launcher instance "
                    "pidToStop=999999999, timeoutMillis=IsNotSet"));
}

TEST_F(ConfigurationFailureE2eTest, TellsOfFilesThatItMayNotRead)
{
    if (geteuid() != 0) GTEST_SKIP() << "needs the right to become another user";
    std::filesystem::permissions(dir.path(), std::filesystem::perms::all);
    const auto run = [](LauncherRun launcherRun) {
        return launcherRun.before([] { std::ignore = setuid(65534); }).run();
    };
    const std::string ini = dir.write("ini/secret", "JAVA_OPT=-Xmx99m\n"), reason = ". Error: (13)";
    std::filesystem::permissions(ini, std::filesystem::perms::none);
    run(startInstance().args("--servicename secret --clog launcher.log"));
    EXPECT_TRUE(
        log().holds("INFO Cannot open service configuration file fileName=ini/secret, "
                    "Exception=\"Cannot read file 'ini/secret'" +
                    reason));

    configure("");
    const std::string file = dir / "bin/launcher.yml";
    std::filesystem::permissions(file, std::filesystem::perms::none);
    const LauncherResult result = run(startInstance());
    EXPECT_EQ(result.status, 20);
    EXPECT_EQ(result.out, "Cannot read file '" + file + "'" + reason + " Permission denied\n");
}

TEST_F(ConfigurationFailureE2eTest, NamesWhyThereIsNoJava)
{
    const std::string guess =
        "Cannot guess JAVA_HOME, it is not set explicitly, neither Korvan Inventory nor "
        "environment variable contains a suitable Java version.\n";
    configure("");
    EXPECT_EQ(startInstance().env("JAVA_HOME", dir.path()).run().out, guess);
    EXPECT_EQ(log().last(), "INFO Launch configuration failure.");
    EXPECT_EQ(startInstance().env("FAKE_INVENTORY_ERROR", "ошибка").run().out,
              "IDS_INVENTORY_CALL_ERROR\nошибка\n" + guess);
    EXPECT_EQ(startInstance().env("FAKE_INVENTORY_PATH", dir.path()).run().status, 4);
    std::filesystem::remove(dir / "bin/libinventory.so");
    EXPECT_TRUE(startInstance().run().out.starts_with(
        "Cannot load Korvan inventory library looking at path " + dir / "bin/libinventory.so. "));
    EXPECT_FALSE(exists("service.pid"));
}

TEST_F(ConfigurationFailureE2eTest, TheProgramLooksForIniFilesInItsFixedPlace)
{
    LauncherRun run = launcher("start --servicename no-such-service --clog launcher.log");
    EXPECT_EQ(run.run().status, 0);  // as always when settings are missing
    EXPECT_TRUE(
        log().holds("INFO Service configuration file not found serviceName=no-such-service, "
                    "fileName=/etc/default/Korvan/Orlanda/no-such-service"));
}

}  // namespace
