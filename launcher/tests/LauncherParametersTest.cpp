#include "LauncherParameters.h"

#include <tuple>

#include "JavaLibResolver.h"
#include "LauncherCliArgs.h"
#include "MessageIds.h"
#include "ScopedEnvironment.h"
#include "UnitTest.h"

namespace {

class LauncherParametersTest : public UnitTest {
protected:
    /// The parameters of a command line, in which '@' stands for the directory.
    const LauncherParameters& merge(const std::wstring& commandLine)
    {
        cliArgs_ = LauncherCliArgs::create(split(L"launcher " + at(commandLine)));
        parameters_ = std::make_unique<LauncherParameters>(*cliArgs_, resolver_);
        return *parameters_;
    }

    ScopedEnvironment noJvmOpts_{"JVM_OPTS", nullptr};
    JavaLibResolver resolver_;
    std::unique_ptr<LauncherCliArgs> cliArgs_;
    std::unique_ptr<LauncherParameters> parameters_;
};

TEST_F(LauncherParametersTest, LocatesTheJvmAndTheWorkingDirectory)
{
    dir_.write("home/lib/server/libjvm.so", "");
    merge(L"start --jclasspath a --javahome @/home --workdir @/home/../place/new");
    EXPECT_EQ(parameters_->getErrors(), L"");
    EXPECT_EQ(parameters_->getJavaHome(), at(L"@/home"));
    EXPECT_EQ(parameters_->getJvmLibraryPath(), at(L"@/home/lib/server/libjvm.so"));
    EXPECT_EQ(parameters_->getWorkDir(), at(L"@/place/new"));
    EXPECT_EQ(log_.lines(), Texts{at(L"INFO LauncherParameters.detectJavaHome: Using JAVA_HOME "
                                     L"from --javahome command line argument. path=@/home")});
    // A given library needs no Java home.
    merge(L"start --jvmdll /no/libjvm.so --javahome /no --jclasspath a");
    EXPECT_EQ(parameters_->getErrors() + parameters_->getJavaHome(), L"");
    EXPECT_EQ(parameters_->getJvmLibraryPath(), L"/no/libjvm.so");
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

TEST_F(LauncherParametersTest, KeepsTheTextsAndTheCodeOfEveryProblem)
{
    const std::tuple<std::wstring, std::uint32_t, std::wstring> cases[] = {
        {L"start", 0,
         getMessage(IDS_CLASS_AND_MODULE_PATHS_ARE_EMPTY) + L"\n" +
             getMessage(IDS_CANNOT_GUESS_JAVAHOME)},
        {L"start --jclasspath a --workdir /dev/null/x", 20,
         L"Cannot read file '/dev/null/x'. Error: (20) Not a directory"},
        {L"start --jclasspath a --javahome /dev", 4, L"Cannot find JVM library"},
        {L"stop --pidfile /dev/null/x", 0,
         L"Cannot read file '/dev/null/x'. Error: (20) Not a directory"},
        {L"stop --pidfile /no", 0, L"Cannot read file '/no'. Error: (2) No such file or directory"},
    };
    for (const auto& [commandLine, code, errors] : cases) {
        EXPECT_EQ(merge(commandLine).getErrors(), errors);
        EXPECT_EQ(parameters_->getErrorCode(), code);
    }
    EXPECT_TRUE(log_.holds(L"ERROR LauncherParameters.ctor: Cannot find JVM library"));
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
    }
    EXPECT_EQ(parameters_->getErrorCode(), 0u);
}

}  // namespace
