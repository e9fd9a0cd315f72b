#include "LauncherConfig.h"

#include <unistd.h>

#include "MessageIds.h"
#include "UnitTest.h"
#include "VariableExpansion.h"

namespace {

class LauncherConfigTest : public UnitTest {
protected:
    /// What is read from a file with `entries` below its first line.
    [[nodiscard]] LauncherConfig configure(const std::string& entries,
                                           const std::wstring& instanceRoot = L"") const
    {
        return readFile("launcher-parameters:\n" + entries, instanceRoot);
    }
    [[nodiscard]] LauncherConfig readFile(const std::string& text,
                                          const std::wstring& instanceRoot = L"") const
    {
        dir_.write("launcher.yml", text);
        return LauncherConfig::readFrom(dir_.wide(), instanceRoot);
    }
};

TEST_F(LauncherConfigTest, GivesTheValuesOfTheFile)
{
    const LauncherConfig config = configure(R"(  # The service.
  work-dir: /first
  work-dir: ${launcher.dir}/work # the last one counts
  service-name: служба
  java-home: /j
  pid-file: a.pid
  log-file: a.log
  class-path: c
  module-path: m
  main-class: p.C
  daemon: true
  quiet: true
  jvm-opts:
  - -Da=${instance.root}
  - "-Db = c"
  main-class-args:
  - 1
  - # the empty word
  minimal-java-version: +11
  banner:
    ru: ?
    ru: Привет, ${launcher.arch}
    default: a b
  unknown: behind the banner
)",
                                            L"/root");
    EXPECT_EQ(config.getErrorMessage(), L"");
    EXPECT_TRUE(config.isFileRead() && config.isQuiet());
    EXPECT_EQ(config.getJvmOptions(), (Texts{L"-Da=/root", L"\"-Db = c\""}));
    EXPECT_EQ(config.getMainClassArguments(), (Texts{L"1", L""}));
    EXPECT_EQ(config.getBanner(),
              (LauncherConfig::Texts{{L"default", L"a b"}, {L"ru", L"Привет, x86-64"}}));
    config.logState();
    const std::wstring record = L"INFO LauncherConfig.logState: ";
    EXPECT_EQ(log_.lines(),
              (Texts{record + at(L"Launcher parameters file read: fileName=@/launcher.yml, "
                                 L"--workdir=@/work, --servicename=служба, --pidfile=a.pid, "
                                 L"--clog=a.log, --quiet=true"),
                     record + L"Java parameters: --javahome=/j, --jclasspath=c, --jmodulepath=m, "
                              L"--jifaceclass=p.C, minimalJavaVersion=11",
                     record + L"JVM options: options='-Da=/root;\"-Db = c\"'",
                     record + L"main class arguments: options=1;"}));
}

TEST_F(LauncherConfigTest, NeedsNoFile)
{
    const LauncherConfig none = LauncherConfig::readFrom(dir_.wide(), L"");
    EXPECT_FALSE(none.isFileRead() || none.hasError());
    EXPECT_EQ(none.getMinimalJavaVersion(), 8);
    none.logState();
    const LauncherConfig unwanted = LauncherConfig::read(L"", false);
    EXPECT_EQ(unwanted.getFileName() + unwanted.getErrorMessage(), L"");
    const std::wstring record =
        L"INFO LauncherConfig.logState: No launcher parameters file read. fileName=@/launcher.yml";
    EXPECT_EQ(log_.lines(), Texts{at(record)});
}

TEST_F(LauncherConfigTest, KeepsWhatIsWrongWithTheFile)
{
    const std::string head = "launcher-parameters:\n";
    const std::string version = head + "  minimal-java-version: ";
    const std::wstring unknown = L"Unknown field '", java = L"Unknown Java version '";
    const std::pair<std::string, std::wstring> cases[] = {
        {"", unknown + L"root'."},
        {"# 1\n" + head, unknown + L"'."},
        {"- launcher-parameters: x", unknown + L" launcher-parameters'."},
        {head + "  quiet: true\n  java_home: x", unknown + L"java_home'."},
        {head + "  quiet\xff: true", unknown + L"quiet'."},
        {head + "  - x", L"Wrong structure."},
        {head + "  jvm-opts:\n  - a\n  # 1", L"Wrong structure."},
        {head + "  main-class-args:\n  # 1\n  - a", L"Wrong structure."},
        {head + "  banner:\n    # 1\n    ru: x", L"Wrong structure."},
        {head + "  banner:\n    - ru: x", L"Wrong structure."},
        {version + "7", java + L"7'."},
        {version + "65536", java + L"65536'."},
        {version + "11.0", java + L"11.0'."},
        {version + "0x11", java + L"0x11'."},
        {version + "${launcher.pid}", java + L"${launcher.pid}'."},
        {version + "\n", java + L"'."},
        {version + "99999999999", java + L"99999999999'."},
        {head + "  pid-file: ${instance.root}/pid",
         L"Launcher has no --instance parameter but config file has a reference to it "
         L"'${instance.root}/pid'."},
    };
    for (const auto& [text, message] : cases) {
        const LauncherConfig config = readFile(text);
        EXPECT_EQ(config.getErrorMessage(), at(L"Error reading file '@/launcher.yml'. " + message));
        EXPECT_EQ(config.getErrorCode(), 2u);
        EXPECT_FALSE(config.isFileRead() || config.isQuiet());
        EXPECT_EQ(config.getMinimalJavaVersion(), 8);
    }
    EXPECT_EQ(readFile("x").getErrorMessage(), formatMessage(IDS_YAML_KEY_EXPECTED, 1));

    std::filesystem::remove(dir_ / "launcher.yml");
    dir_.write("launcher.yml/file", "");
    const LauncherConfig directory = LauncherConfig::readFrom(dir_.wide(), L"");
    EXPECT_EQ(directory.getErrorCode(), 20u);
    directory.logState();
    EXPECT_EQ(log_.lines(), Texts{at(L"ERROR LauncherConfig.logState: Cannot read file "
                                     L"fileName=@/launcher.yml, errors=\"Cannot read file "
                                     L"'@/launcher.yml'. Error: (21) Is a directory\"")});
}

TEST_F(LauncherConfigTest, LeavesOutWhatItsOddRulesLeaveOut)
{
    const LauncherConfig config = configure(R"(  jvm-opts:
  work-dir: behind an empty list
  main-class-args:
    - below the key
  pid-file: behind an empty list
  quiet: True
  jvm-opts:
  - -Da
  jvm-opts:
  - key: -Db
  main-class-args:
)");
    EXPECT_EQ(config.getErrorMessage() + config.getWorkDir() + config.getPidFile(), L"");
    EXPECT_EQ(config.getJvmOptions(), (Texts{L"-Da", L"-Db"}));
    EXPECT_EQ(config.getMainClassArguments(), Texts{});
    EXPECT_FALSE(config.isQuiet());
    for (const std::string version : {"8", "65535"}) {
        EXPECT_EQ(configure("  minimal-java-version: " + version).getErrorMessage(), L"");
    }
    EXPECT_EQ(readFile("launcher-parameters:\n  quiet: true\nother:\n  x: 1").isQuiet(), true);
}

TEST_F(LauncherConfigTest, ExpandsVariablesOneAfterTheOther)
{
    ExpansionContext context{L"/i${env.path}${launcher.", L"/l", L"/f", L"/p:${instance.root}"};
    const std::wstring pid = std::to_wstring(getpid());
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"${launcher.dir}${launcher.dir}", L"/l/l"},
        {L"$${launcher.pid}}", L"$" + pid + L"}"},
        {L"${launcher.version} ${launcher.arch}", L"3.11.1+4 x86-64"},
        {L"${Launcher.Dir} ${env.home} ${launcher.dir",
         L"${Launcher.Dir} ${env.home} ${launcher.dir"},
        // A later variable that an earlier one brings in, and one that it begins.
        {L"${instance.root}dir}", L"/i/p:${instance.root}/l"},
    };
    for (const auto& [text, expanded] : cases) EXPECT_EQ(expandVariables(context, text), expanded);

    const std::wstring start = L"2 Error reading file '/f'. The value of the variable ";
    const auto expand = [&] { return expandVariables(context, L"${env.path}${instance.root}"); };
    context.instanceRoot = L"${instance.";  // each time with less of the text behind it
    EXPECT_EQ(expandVariables(context, L"${instance.root}root}root}"), L"${instance.");
    context.path = L"/a:${env.path}";
    EXPECT_EQ(expandVariables(context, L"${launcher.dir}"), L"/l");
    EXPECT_EQ(raised(expand),
              start + L"${env.path} contains the variable itself: '/a:${env.path}'.");
    context.instanceRoot = L"${instance.root}";
    EXPECT_EQ(raised(expand),
              start + L"${instance.root} contains the variable itself: '${instance.root}'.");
}

}  // namespace
