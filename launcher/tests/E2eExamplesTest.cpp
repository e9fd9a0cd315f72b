#include <arpa/inet.h>
#include <sys/socket.h>

#include "EndToEndTest.h"
#include "FileDescriptor.h"

namespace {

/// What the server at `port` of this machine sends back; empty when there is none.
std::string answerTo(const std::string& request, int port)
{
    const FileDescriptor connection(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address)) {
        return "";
    }
    std::string answer(4096, '\0');
    const ssize_t sent = send(connection.get(), request.data(), request.size(), MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(request.size())) return "";
    const ssize_t size = recv(connection.get(), answer.data(), answer.size(), MSG_WAITALL);
    return answer.substr(0, size < 0 ? 0 : static_cast<std::size_t>(size));
}

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
        LauncherRun run = launcher("start --quiet --cout out --clog launcher.log");
        run.withJvm().args("--pidfile service.pid --jifaceclass launcher.MainAdapter");
        run.args("--jclasspath " ADAPTER_JAR ":" PROGRAM_JAR " --jvmdll " + library);
        std::istringstream words(arguments);
        for (std::string word; words >> word;) run.args("--jifacearg " + word);
        return run;
    }
    /// The number behind the last `prefix` of the output, once it is there.
    [[nodiscard]] int awaitNumber(const std::string& prefix) const
    {
        const auto place = [&] { return content("out").rfind(prefix); };
        EXPECT_TRUE(waitUntil(
            [&] { return place() != std::string::npos && content("out").ends_with("\n"); }));
        return std::atoi(content("out").substr(place() + prefix.size()).c_str());
    }
    bool printed(const std::string& text) const
    {
        return content("out").find(text) != std::string::npos;
    }
    void expectOrderlyEnd(const std::string& pidFile = "service.pid") const
    {
        EXPECT_EQ(log().last(), "INFO Normal exit exitCode=0");
        EXPECT_FALSE(exists(pidFile));
    }
};
FOR_EACH_JDK(ExamplesE2eTest);

}  // namespace

TEST_P(ExamplesE2eTest, JettyServesFilesUntilItIsStopped)
{
    const std::string jar = JETTY_JAR;
    if (jar.empty()) GTEST_SKIP() << "Jetty is missing: Debian has it as libjetty9-java";
    dir.write("www/hello.txt", "Hello from Jetty");
    const LauncherProcess service = installed("jetty-service", "8080", {jar}).start();
    const int port = awaitNumber("Listening on http://127.0.0.1:");
    const std::string answer = answerTo("GET /hello.txt HTTP/1.0\r\n\r\n", port);
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer;
    EXPECT_TRUE(answer.ends_with("\r\n\r\nHello from Jetty")) << answer;
    expectEndAfter(SIGUSR1, service, 0);
    expectOrderlyEnd("files.pid");
}

TEST_P(ExamplesE2eTest, TheAdapterRunsAProgramUntilItsThreadsHaveEnded)
{
    EXPECT_EQ(program("program.Program thread 300").run().status, 0);
    EXPECT_EQ(content("out"), "ready 300\nmain returns\nthread ends\nhook\n");
    expectOrderlyEnd();
    EXPECT_EQ(program("program.Program exit 0").run().status, 7);
    EXPECT_TRUE(log().holds("WARN JVM exited with nonzero exit code pid="));
}

TEST_P(ExamplesE2eTest, TheAdapterEndsAProgramAsSigtermWould)
{
    const LauncherProcess server =
        installed("main-program", "8037", {ADAPTER_JAR, SAMPLE_JAR}).start();
    EXPECT_EQ(answerTo("", awaitNumber("Listening on port ")).find(':'), 2U);
    EXPECT_EQ(content("time.pid"), std::to_string(server.pid));
    expectEndAfter(SIGUSR1, server, 0);
    EXPECT_TRUE(printed("Good bye\n"));

    const LauncherProcess thread = program("program.Program thread 600000").start();
    EXPECT_TRUE(waitUntil([this] { return printed("main returns\n"); }));
    expectEndAfter(SIGUSR2, thread, 0);
    EXPECT_TRUE(content("out").ends_with("main returns\nhook\n")) << content("out");

    const LauncherProcess hook = program("program.Program hook 600000").start();
    EXPECT_TRUE(waitUntil([this] { return printed("main waits\n"); }));
    expectEndAfter(SIGUSR1, hook, 0);
    EXPECT_TRUE(printed("main has ended\n"));
}

TEST_P(ExamplesE2eTest, AProgramThatMayBeInterruptedEndsInOrder)
{
    LauncherRun run = program("program.Program wait 600000");
    const LauncherProcess waiting =
        run.args("--jvmopt -Dlauncher.adapter.interruptMillis=60000").start();
    EXPECT_EQ(awaitNumber("ready "), 600000);
    expectEndAfter(SIGUSR1, waiting, 0);
    EXPECT_EQ(content("out"), "ready 600000\nhook\n");
    expectOrderlyEnd();
}

TEST_P(ExamplesE2eTest, TheAdapterTellsWhyAProgramDoesNotRun)
{
    const std::string failure =
        "Java exception while invoking launcher/MainAdapter.start: java.lang.";
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
        EXPECT_TRUE(result.err.starts_with(failure + message)) << result.err;
    }
}
