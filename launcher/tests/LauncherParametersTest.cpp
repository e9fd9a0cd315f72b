#include "LauncherParameters.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <memory>
#include <thread>
#include <tuple>

#include "FileDescriptor.h"
#include "FileLock.h"
#include "IJavaFinder.h"
#include "JavaLibResolver.h"
#include "LauncherCliArgs.h"
#include "LauncherConfig.h"
#include "ScopedEnvironment.h"
#include "ServiceInstanceParameters.h"
#include "UnitTest.h"
#include "WaitUntil.h"

namespace {

/// Finds what it is told to find.
struct FakeJavaFinder final : IJavaFinder {
    JavaFinderResult find(std::int32_t minimalJavaVersion) override
    {
        asked.push_back(minimalJavaVersion);
        return result;
    }
    const std::wstring& getErrors() const override { return none; }

    JavaFinderResult result;
    const std::wstring none;
    std::vector<std::int32_t> asked;
};

class LauncherParametersTest : public UnitTest {
protected:
    /// The parameters of a command line, in which '@' stands for the directory,
    /// with the directory's launcher.yml and service.ini, if they are there.
    const LauncherParameters& merge(const std::wstring& commandLine)
    {
        cliArgs_ = LauncherCliArgs::create(split(L"launcher " + at(commandLine)));
        config_ = std::make_unique<LauncherConfig>(LauncherConfig::readFrom(dir_.wide(), L""));
        const auto ini = ServiceInstanceParameters::create(L"service.ini", dir_.wide() + L"/");
        parameters_ = std::make_unique<LauncherParameters>(*cliArgs_, *ini, *config_,
                                                           JavaLibResolver(), finder_);
        parameters_->logState();
        return *parameters_;
    }
    void configure(const std::string& entries) const
    {
        dir_.write("launcher.yml", "launcher-parameters:\n" + entries);
    }

    ScopedEnvironment noJvmOpts_{"JVM_OPTS", nullptr};
    FakeJavaFinder finder_;
    std::unique_ptr<LauncherCliArgs> cliArgs_;
    std::unique_ptr<LauncherConfig> config_;
    std::unique_ptr<LauncherParameters> parameters_;
};

TEST_F(LauncherParametersTest, PrefersTheCommandLineToTheFileAndJoinsLists)
{
    configure(
        "  class-path: c\n  module-path: m\n  main-class: C\n  pid-file: p\n  daemon: true\n"
        "  quiet: true\n  work-dir: ${launcher.dir}/y\n  jvm-opts:\n  - -D3\n"
        "  main-class-args:\n  - a\n  - b\n");
    dir_.write("service.ini", "JAVA_OPT=-D2");
    const std::string options = " -D4=b c\t--jvmopt\r\n--jvmopt--jvmopt-D5 ";
    const ScopedEnvironment jvmOpts("JVM_OPTS", options.c_str());
    const auto texts = [this] {
        return Texts{parameters_->getClassPath(), parameters_->getModulePath(),
                     parameters_->getMainClass(), parameters_->getPidFile(),
                     parameters_->getWorkDir()};
    };
    merge(L"start --jvmdll x");
    EXPECT_EQ(texts(), (Texts{L"c", L"m", L"C", L"p", at(L"@/y")}));
    EXPECT_TRUE(parameters_->isQuiet() && !parameters_->isDaemon());

    merge(
        L"start --jvmdll x --jclasspath 1 --jmodulepath 2 --jifaceclass 3 --pidfile 4 "
        L"--workdir @/y/../5 --javahome /no --jvmopt -D1 --jifacearg b");
    EXPECT_EQ(texts(), (Texts{L"1", L"2", L"3", L"4", at(L"@/5")}));
    EXPECT_EQ(parameters_->getJvmOptions(), (Texts{L"-D1", L"-D2", L"-D3", L"-D4=b c", L"-D5"}));
    EXPECT_EQ(parameters_->getMainClassArguments(), (Texts{L"b", L"a", L"b"}));
    const std::wstring record =
        L"INFO LauncherParameters.logState: Adding JVM_OPTS to JVM arguments ";
    EXPECT_TRUE(log_.holds(record + L"JVM_OPTS='" + toWide(options) + L"'"));
    // A given library needs no Java home, and a module path no class path.
    EXPECT_EQ(parameters_->getJvmLibraryPath(), L"x");
    configure("");
    EXPECT_EQ(merge(L"start --jvmdll x --jmodulepath m").getErrors(), L"");
}

TEST_F(LauncherParametersTest, TakesTheFirstJavaHomeThatIsSet)
{
    const auto expectHome = [this](const std::string& home, const std::wstring& record) {
        const std::wstring library = dir_.wide(home + "/lib/server/libjvm.so");
        dir_.write(home + "/lib/server/libjvm.so", "");
        const std::wstring option = home == "cli" ? L" --javahome @/cli" : L"";
        EXPECT_EQ(merge(L"start --jclasspath a" + option).getJvmLibraryPath(), library);
        EXPECT_TRUE(log_.holds(at(L"INFO LauncherParameters." + record))) << home;
    };
    const std::wstring configured = L"detectJavaHome: Using JAVA_HOME from ";
    configure("  minimal-java-version: 17");
    finder_.result = {at(L"@/found"), true};
    expectHome("found",
               L"logState: Using a JAVA_HOME value from a system environment JavaHome=@/found");
    configure("  java-home: ${launcher.dir}/yml");
    expectHome("yml", configured + L"Launcher config file (launcher.yml) java-home parameter.");
    dir_.write("service.ini", "JAVA_HOME=" + dir_ / "ini");
    expectHome("ini", configured + L"service ini file --javahome parameter.");
    expectHome("cli", configured + L"--javahome command line argument. path=@/cli");
    expectHome("cli", L"logState: JVM_OPTS environment variable is not defined or empty");
    EXPECT_EQ(finder_.asked, std::vector<std::int32_t>{17});
}

TEST_F(LauncherParametersTest, ChoosesTheBannerByLanguage)
{
    const std::tuple<const char*, std::wstring, const char*, std::wstring> cases[] = {
        {"    ru: r\n    en: e", L" --jvmopt -Da --jvmopt -Duser.language=RU", "C", L"r"},
        {"    ru: r\n    en: e", L" --jvmopt -Duser.language=de", "C", L"e"},
        {"    en: e\n    en_US: u", L" --jvmopt -Duser.language=", "C", L"u"},
        {"    en: e", L"", "de_DE@euro", L"d"},
    };
    for (const auto& [texts, options, locale, banner] : cases) {
        const ScopedEnvironment lcAll("LC_ALL", locale);
        configure("  banner:\n    default: d\n" + std::string(texts));
        EXPECT_EQ(merge(L"start --jvmdll x" + options).getUserStartupMessage(), banner);
    }
    EXPECT_TRUE(
        log_.holds(L"INFO LauncherParameters.getUserStartupMessage: Language is explicitly set "
                   L"using JvmOpts language=ru"));
}

TEST_F(LauncherParametersTest, ReadsOnlyDigitsFromThePidFileOfAnother)
{
    const std::wstring illegal = L"Illegal characters in PID file '@/pid'";
    const std::tuple<std::string, std::int32_t, std::uint32_t, std::wstring> cases[] = {
        {"2147483647", 2147483647, 0, L""},
        {{"42\0x", 4}, 42, 0, L""},
        {"12345678901", -1, 0, L"Extra characters in PID file '@/pid'"},
        {"2147483648", -1, 0, illegal},
        {{"\0", 1}, -1, 0, illegal},
        {std::string(10 * 1024 * 1024 + 1, '1'), -1, 20, L"File '@/pid' is too big"},
    };
    for (const auto& [content, pid, code, errors] : cases) {
        dir_.write("pid", content);
        EXPECT_EQ(merge(L"stop --pidfile @/pid").getPidToStop(), pid);
        EXPECT_EQ(parameters_->getErrors(), at(errors));
        EXPECT_EQ(parameters_->getErrorCode(), code);
    }
}

TEST_F(LauncherParametersTest, WaitsForAPidFileThatIsBeingWritten)
{
    const FileDescriptor looks(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ASSERT_GE(inotify_add_watch(looks.get(), dir_.write("pid", "").c_str(), IN_OPEN), 0);
    auto lock = std::make_unique<FileLock>(dir_.wide("pid"), FileLock::Missing::Create);
    std::jthread writer([&] {
        std::size_t seen = 0;  // a lock is tried for again and again
        EXPECT_TRUE(waitUntil([&] {
            inotify_event look{};
            if (read(looks.get(), &look, sizeof look) > 0) ++seen;
            return seen == 20;
        }));
        dir_.write("pid", "42");
        lock = nullptr;
    });
    EXPECT_EQ(merge(L"stop --pidfile @/pid").getPidToStop(), 42);
}

}  // namespace
