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
#include "MessageIds.h"
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
    const std::wstring& getErrors() const override { return errors; }

    JavaFinderResult result;
    std::wstring errors;
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
    const ScopedEnvironment jvmOpts("JVM_OPTS", "-D4");
    const auto texts = [this] {
        return Texts{parameters_->getClassPath(), parameters_->getModulePath(),
                     parameters_->getMainClass(), parameters_->getPidFile(),
                     parameters_->getWorkDir()};
    };
    merge(L"start --jvmdll x");
    EXPECT_EQ(texts(), (Texts{L"c", L"m", L"C", L"p", at(L"@/y")}));
    EXPECT_EQ(parameters_->getJvmOptions(), (Texts{L"-D2", L"-D3", L"-D4"}));
    EXPECT_EQ(parameters_->getMainClassArguments(), (Texts{L"a", L"b"}));
    EXPECT_TRUE(parameters_->isQuiet() && !parameters_->isDaemon());

    merge(
        L"start --jvmdll x --jclasspath 1 --jmodulepath 2 --jifaceclass 3 --pidfile 4 "
        L"--workdir @/y/../5 --javahome /no --jvmopt -D1 --jifacearg b");
    EXPECT_EQ(texts(), (Texts{L"1", L"2", L"3", L"4", at(L"@/5")}));
    EXPECT_EQ(parameters_->getJvmOptions(), (Texts{L"-D1", L"-D2", L"-D3", L"-D4"}));
    EXPECT_EQ(parameters_->getMainClassArguments(), (Texts{L"b", L"a", L"b"}));
    // A given library needs no Java home, and a module path no class path.
    EXPECT_EQ(parameters_->getJvmLibraryPath(), L"x");
    configure("");
    EXPECT_EQ(merge(L"start --jvmdll x --jmodulepath m").getErrors(), L"");
}

TEST_F(LauncherParametersTest, TakesTheFirstJavaHomeThatIsSet)
{
    for (const char* home : {"found", "yml", "ini", "cli"}) {
        dir_.write(std::string(home) + "/lib/server/libjvm.so", "");
    }
    const auto home = [this](const std::wstring& option = L"") {
        const std::wstring& chosen = merge(L"start --jclasspath a" + option).getJavaHome();
        EXPECT_EQ(parameters_->getJvmLibraryPath(), chosen + L"/lib/server/libjvm.so");
        parameters_->logState();
        return chosen;
    };
    finder_.result = {at(L"@/found"), true};
    EXPECT_EQ(home(), at(L"@/found"));
    configure("  minimal-java-version: 17\n  java-home: ${launcher.dir}/yml");
    EXPECT_EQ(home(), at(L"@/yml"));
    EXPECT_EQ(parameters_->getMinimalJavaVersion(), 17);
    dir_.write("service.ini", "JAVA_HOME=" + dir_ / "ini");
    EXPECT_EQ(home(), at(L"@/ini"));
    EXPECT_EQ(home(L" --javahome @/cli"), at(L"@/cli"));
    EXPECT_EQ(finder_.asked, std::vector<std::int32_t>{8});
    const std::wstring start = L"INFO LauncherParameters.";
    const std::wstring noJvmOpts =
        start + L"logState: JVM_OPTS environment variable is not defined or empty";
    const std::wstring using_ = start + L"detectJavaHome: Using JAVA_HOME from ";
    EXPECT_EQ(
        log_.lines(),
        (Texts{at(start + L"logState: Using a JAVA_HOME value from a system environment "
                          L"JavaHome=@/found"),
               noJvmOpts, using_ + L"Launcher config file (launcher.yml) java-home parameter.",
               noJvmOpts, using_ + L"service ini file --javahome parameter.", noJvmOpts,
               at(using_ + L"--javahome command line argument. path=@/cli"), noJvmOpts}));
}

TEST_F(LauncherParametersTest, AsksForAJavaOfTheMinimalVersionAndKeepsWhatWentWrong)
{
    configure("  minimal-java-version: 21");
    finder_.errors = L"inventory failed";
    EXPECT_EQ(merge(L"start --jclasspath a").getErrors(),
              L"inventory failed\n" + getMessage(IDS_CANNOT_GUESS_JAVAHOME));
    EXPECT_EQ(finder_.asked, std::vector<std::int32_t>{21});
    EXPECT_EQ(parameters_->getErrorCode(), 0u);
    EXPECT_TRUE(log_.holds(L"ERROR LauncherParameters.detectJavaHome: inventory failed"));

    // Also with a Java the error stops the start.
    dir_.write("lib/server/libjvm.so", "");
    finder_.result.path = dir_.wide();
    merge(L"start --jclasspath a").logState();
    EXPECT_EQ(parameters_->getErrors(), L"inventory failed");
    EXPECT_EQ(log_.lines().back(),
              L"INFO LauncherParameters.logState: Launch configuration failure.");

    configure("  nonsense: x");
    EXPECT_TRUE(merge(L"start --jclasspath a --jvmdll x").hasErrors());
    EXPECT_EQ(parameters_->getErrorCode(), 2u);
}

TEST_F(LauncherParametersTest, ChoosesTheBannerByLanguage)
{
    const auto banner = [this](const std::wstring& options, const char* locale) {
        const ScopedEnvironment lcAll("LC_ALL", locale);
        return merge(L"start --jvmdll x --jclasspath a" + options).getUserStartupMessage();
    };
    EXPECT_EQ(banner(L"", "C"), L"");
    configure("  banner:\n    default: d\n    ru: r\n    en: e\n");
    EXPECT_EQ(banner(L" --jvmopt -Da --jvmopt -Duser.language=RU", "C"), L"r");
    EXPECT_EQ(log_.lines(), Texts{L"INFO LauncherParameters.getUserStartupMessage: Language is "
                                  L"explicitly set using JvmOpts language=ru"});
    for (const wchar_t* other :
         {L"", L" --jvmopt -Duser.language=de", L" --jvmopt -Duser.language="}) {
        EXPECT_EQ(banner(other, "C"), L"e");
    }
    configure("  banner:\n    default: d\n    en: e\n    en_US: u");
    EXPECT_EQ(banner(L"", "C"), L"u");
    EXPECT_EQ(banner(L"", "de_DE@euro"), L"d");
}

TEST_F(LauncherParametersTest, SplitsJvmOptsAtEveryMarker)
{
    const std::pair<const char*, Texts> cases[] = {
        {"", {L"-Dfirst"}},
        {"  --jvmopt  ", {L"-Dfirst"}},
        {"--jvmopt-Xmx1g", {L"-Dfirst", L"-Xmx1g"}},
        {" -Da=b c\t--jvmopt\r\n--jvmopt -Dd", {L"-Dfirst", L"-Da=b c", L"-Dd"}},
    };
    for (const auto& [value, options] : cases) {
        const ScopedEnvironment jvmOpts("JVM_OPTS", value);
        merge(L"start --jvmdll x --jclasspath a --jvmopt -Dfirst").logState();
        EXPECT_EQ(parameters_->getJvmOptions(), options) << value;
    }
    const std::wstring logState = L"INFO LauncherParameters.logState: ";
    EXPECT_TRUE(log_.holds(logState + L"JVM_OPTS environment variable is not defined or empty"));
    EXPECT_TRUE(log_.holds(logState + L"Adding JVM_OPTS to JVM arguments JVM_OPTS=  --jvmopt  "));
}

TEST_F(LauncherParametersTest, ReadsOnlyDigitsFromThePidFileOfAnother)
{
    const std::tuple<std::string_view, std::int32_t, std::wstring> cases[] = {
        {"2147483647", 2147483647, L""},
        {{"42\0x", 4}, 42, L""},
        {"12345678901", -1, L"Extra characters in PID file '@/pid'"},
        {"2147483648", -1, L"Illegal characters in PID file '@/pid'"},
        {" 42", -1, L"Illegal characters in PID file '@/pid'"},
        {{"\0", 1}, -1, L"Illegal characters in PID file '@/pid'"},
    };
    for (const auto& [content, pid, errors] : cases) {
        dir_.write("pid", content);
        EXPECT_EQ(merge(L"stop --pidfile @/pid").getPidToStop(), pid) << content;
        EXPECT_EQ(parameters_->getErrors(), at(errors));
        EXPECT_EQ(parameters_->getErrorCode(), 0u);
    }
    dir_.write("pid", std::string(10 * 1024 * 1024 + 1, '1'));
    EXPECT_EQ(merge(L"stop --pidfile @/pid").getErrorCode(), 20u);
    EXPECT_EQ(parameters_->getErrors(), at(L"File '@/pid' is too big"));
}

TEST_F(LauncherParametersTest, WaitsForAPidFileThatIsBeingWritten)
{
    const std::string file = dir_.write("pid", "");
    const FileDescriptor looks(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ASSERT_GE(inotify_add_watch(looks.get(), file.c_str(), IN_OPEN), 0);
    auto lock = std::make_unique<FileLock>(dir_.wide("pid"), FileLock::Missing::Create);
    std::jthread writer([&] {
        std::size_t seen = 0;  // a lock is tried for again and again
        const bool isWaitedFor = waitUntil([&] {
            inotify_event look{};
            if (read(looks.get(), &look, sizeof look) > 0) ++seen;
            return seen == 20;
        });
        EXPECT_TRUE(isWaitedFor);
        dir_.write("pid", "42");
        lock = nullptr;
    });
    EXPECT_EQ(merge(L"stop --pidfile @/pid").getPidToStop(), 42);
}

}  // namespace
