#include <regex>

#include "EndToEndTest.h"

namespace {

class ExamplesE2eTest : public JdkTest {
protected:
    /// A start of the example as its README.md installs it, but with a free port instead of
    /// `port`. Its output goes to the file "out".
    [[nodiscard]] LauncherRun installed(const std::string& example, const std::string& port,
                                        const std::vector<std::filesystem::path>& jars) const
    {
        std::string settings = readText(EXAMPLES + ("/" + example + "/launcher.yml"));
        dir.write("bin/launcher.yml", settings.replace(settings.find(port), port.size(), "0"));
        std::filesystem::copy(LAUNCHER_EXECUTABLE, dir / "bin/launcher");
        std::filesystem::create_directory(dir / "lib");
        for (const std::filesystem::path& jar : jars) {
            std::filesystem::copy(jar, dir.path() / "lib" / jar.filename());
        }
        LauncherRun run = launcher("start --quiet --cout out --jvmdll " + library);
        run.args("--clog launcher.log --instance " + dir.path().string());
        return run.withJvm().program(dir / "bin/launcher");
    }
    /// A start of the test program by the adapter.
    [[nodiscard]] LauncherRun program(const std::string& arguments) const
    {
        std::filesystem::remove(dir / "out");
        LauncherRun run = launcher("start --quiet --cout out --clog launcher.log");
        run.withJvm().args("--pidfile service.pid --jifaceclass launcher.MainAdapter");
        run.args("--jclasspath " ADAPTER_JAR ":" PROGRAM_JAR " --jvmdll " + library);
        std::istringstream words(arguments);
        for (std::string word; words >> word;) run.args("--jifacearg " + word);
        return run;
    }
    /// Sends a signal once the program has printed `text`.
    void expectEndAt(const std::string& text, int signal, const LauncherRun& run) const
    {
        const LauncherProcess process = run.start();
        EXPECT_TRUE(waitUntil([&] { return content("out").ends_with(text); }));
        expectEndAfter(signal, process, 0);
    }
    /// What the server that prints its port behind `prefix` answers.
    [[nodiscard]] std::string answer(const std::string& prefix, const std::string& request) const
    {
        std::smatch port;
        std::string out;
        const std::regex line(prefix + "([0-9]+)[^]*\n");
        EXPECT_TRUE(waitUntil([&] { return std::regex_search(out = content("out"), port, line); }));
        const std::string connect = "exec 3<>/dev/tcp/127.0.0.1/" + port.str(1);
        const LauncherRun shell = launcher("-c").program("/bin/bash");
        return LauncherRun(shell)
            .arg(connect + " && printf '" + request + "' >&3 && cat <&3")
            .run()
            .out;
    }
};
// The hooks, and the threads that keep a program alive, are the JDK's.
FOR_EACH_JDK(ExamplesE2eTest);

TEST_P(ExamplesE2eTest, JettyServesFilesUntilItIsStopped)
{
    const std::string jar = JETTY_JAR;
    if (jar.empty()) GTEST_SKIP() << "Jetty is missing: Debian has it as libjetty9-java";
    dir.write("www/hello.txt", "Hello from Jetty");
    const LauncherProcess service = installed("jetty-service", "8080", {jar}).start();
    const std::string text =
        answer("Listening on http://127.0.0.1:", "GET /hello.txt HTTP/1.0\\r\\n\\r\\n");
    EXPECT_TRUE(text.starts_with("HTTP/1.1 200 OK\r\n")) << text;
    EXPECT_TRUE(text.ends_with("\r\n\r\nHello from Jetty")) << text;
    expectEndAfter(SIGUSR1, service, 0);
    EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
    EXPECT_FALSE(exists("files.pid"));
}

TEST_P(ExamplesE2eTest, TheTimeServerAnswersUntilItIsStopped)
{
    const LauncherProcess server =
        installed("main-program", "8037", {ADAPTER_JAR, SAMPLE_JAR}).start();
    EXPECT_EQ(answer("Listening on port ", "").find(':'), 2U);
    EXPECT_EQ(content("time.pid"), std::to_string(server.pid));
    expectEndAfter(SIGUSR1, server, 0);
    EXPECT_TRUE(content("out").ends_with("\nGood bye\n")) << content("out");
}

TEST_P(ExamplesE2eTest, TheAdapterRunsAProgramUntilItsThreadsHaveEnded)
{
    EXPECT_EQ(program("program.Program thread 300").run().status, 0);
    EXPECT_EQ(content("out"), "ready\nmain returns\nthread ends\nhook\n");
    EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
    EXPECT_EQ(program("program.Program exit 0").run().status, 7);
}

TEST_P(ExamplesE2eTest, TheAdapterEndsAProgramAsSigtermWould)
{
    expectEndAt("main returns\n", SIGUSR2, program("program.Program thread 600000"));
    EXPECT_EQ(content("out"), "ready\nmain returns\nhook\n");
    expectEndAt("ready\n", SIGUSR1, program("program.Program hook 600000"));
    EXPECT_NE(content("out").find("main has ended\n"), std::string::npos) << content("out");

    LauncherRun run = program("program.Program wait 600000");  // which may be interrupted first
    expectEndAt("ready\n", SIGUSR1, run.args("--jvmopt -Dlauncher.adapter.interruptMillis=60000"));
    EXPECT_EQ(content("out"), "ready\nhook\n");
    EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
}

TEST_P(ExamplesE2eTest, TheAdapterTellsWhyAProgramDoesNotRun)
{
    const std::pair<std::string, std::string> cases[] = {
        {"program.Program throw 0", "IllegalStateException: thrown by main\n"},
        {"no.Such", "IllegalArgumentException: Main class no.Such is not on the class path\n"},
        {"launcher.MainAdapter",
         "IllegalArgumentException: Class launcher.MainAdapter has no method public static void "
         "main(String[])\n"},
    };
    for (const auto& [arguments, message] : cases) {
        const LauncherResult result = program(arguments).run();
        EXPECT_EQ(result.status, 8);
        EXPECT_TRUE(result.err.starts_with(
            "Java exception while invoking launcher/MainAdapter.start: java.lang." + message))
            << result.err;
    }
}

}  // namespace
