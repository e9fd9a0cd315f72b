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
};

class ExampleE2eTest : public Installation, public testing::WithParamInterface<Jdk> {};
FOR_EACH_JDK(ExampleE2eTest);

TEST_P(ExampleE2eTest, RunsAsItsFilesSay)
{
    // As installed, but with a free port and a Java that is here.
    const std::filesystem::path java = std::filesystem::path(GetParam().second) / "../../..";
    const std::tuple<std::string, std::string, std::string, std::string> files[] = {
        {"launcher.yml", "bin/launcher.yml", "- 8080 ", "- 0 "},
        {"ini/hello", "ini/hello", "/usr/lib/jvm/default-java", java.lexically_normal()},
    };
    for (const auto& [file, as, words, instead] : files) {
        std::string text = readText(std::filesystem::path(EXAMPLE_SERVICE) / file);
        dir.write(as, text.replace(text.find(words), words.size(), instead));
    }
    install(EXAMPLE_JAR, "lib/hello-service.jar");
    LauncherRun run = startInstance().withJvm().env("LC_ALL", "ru_RU.UTF-8").args("--cout out");
    const LauncherProcess service = run.start();
    EXPECT_TRUE(
        waitUntil([this] { return content("out").find("Listening") != std::string::npos; }));
    const std::string root = dir.path().string();
    const std::string start = "Служба hello запущена, каталог: " + root +
                              "\nStarted with {daemon=false, instance.root=" + root +
                              ", quiet=false}\nListening on ";
    EXPECT_TRUE(content("out").starts_with(start)) << content("out");
    EXPECT_EQ(content("hello.pid"), std::to_string(service.pid));
    expectEndAfter(SIGUSR1, service, 0);
    EXPECT_FALSE(exists("hello.pid"));
    const LauncherLog log(dir / "hello.log");
    EXPECT_TRUE(log.records.at(0).starts_with("INFO Launcher started. version=3.11.1+4, time=2"));
    EXPECT_TRUE(log.holds("INFO JVM argument JVM argument=-Xmx128m"));
    EXPECT_FALSE(log.holds("INFO Inventory library is initialised"));  // nobody asked it
}

TEST_P(ExampleE2eTest, DoesNotRunWithAnOlderJavaThanItsFileNames)
{
    dir.write("bin/launcher.yml", "launcher-parameters:\n  minimal-java-version: 99\n");
    const std::string jvm = GetParam().second;
    LauncherRun run = startInstance().withJvm().args("--clog launcher.log --jclasspath . --jvmdll");
    const LauncherResult result = run.arg(jvm).run();
    EXPECT_EQ(result.status, 6);
    EXPECT_EQ(result.err, "Cannot create JVM 99 instance with library '" + jvm +
                              "'. Java version is not sufficient for the application.\n");
    EXPECT_TRUE(log().holds("INFO JVM destroyed"));
}

using ConfigurationE2eTest = Installation;

TEST_F(ConfigurationE2eTest, NamesWhatIsWrongWithTheFileAndStartsNothing)
{
    const std::string file = dir / "bin/launcher.yml";
    const std::tuple<std::string, int, std::string> cases[] = {
        {"launcher-parameters:\n  work-dir: ${env.path}\n", 2,
         "Error reading file '" + file +
             "'. The value of the variable ${env.path} contains the variable itself: "
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
}

TEST_F(ConfigurationE2eTest, TakesTheJavaOfTheInventoryOrTellsWhyThereIsNone)
{
    dir.write("bin/launcher.yml", R"(launcher-parameters:
  class-path: bin
  log-file: ${launcher.dir}/../launcher.log
)");
    install(FAKE_JVM, "java/lib/server/libjvm.so");
    LauncherRun run = startInstance().args("--servicename other --clog other.log");
    EXPECT_EQ(run.env("FAKE_INVENTORY_PATH", dir / "java").run().err,
              "Cannot create JVM 8 instance with library '" +
                  dir / "java/lib/server/libjvm.so'. Error -1: unknown error\n");
    const std::string notFound = "INFO Service configuration file not found serviceName=other, ";
    EXPECT_TRUE(LauncherLog(dir / "other.log").holds(notFound + "fileName=ini/other"));
    const std::string shown = "IDS_INVENTORY_CALL_ERROR\nошибка\n";
    EXPECT_EQ(run.env("FAKE_INVENTORY_ERROR", "ошибка").run().out, shown);

    const std::string guess =
        "Cannot guess JAVA_HOME, it is not set explicitly, neither Korvan Inventory nor "
        "environment variable contains a suitable Java version.\n";
    EXPECT_EQ(startInstance().env("JAVA_HOME", dir.path()).run().out, guess);
    EXPECT_EQ(log().last(), "INFO Launch configuration failure.");
    EXPECT_EQ(startInstance().env("FAKE_INVENTORY_ERROR", "ошибка").run().out, shown + guess);
    std::filesystem::remove(dir / "bin/libinventory.so");
    EXPECT_TRUE(startInstance().run().out.starts_with(
        "Cannot load Korvan inventory library looking at path " + dir / "bin/libinventory.so. "));

    // The program itself has a fixed place for ini files; missing settings end it with 0.
    EXPECT_EQ(launcher("start --servicename other --clog launcher.log").run().status, 0);
    EXPECT_TRUE(log().holds(notFound + "fileName=/etc/default/Korvan/Orlanda/other"));
}

}  // namespace
