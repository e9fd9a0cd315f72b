#include "LauncherConfig.h"

#include <unistd.h>

#include "UnitTest.h"
#include "VariableExpansion.h"

namespace {

class LauncherConfigTest : public UnitTest {
protected:
    /// What is read from a file with this text.
    [[nodiscard]] LauncherConfig read(const std::string& text,
                                      const std::wstring& instanceRoot = L"") const
    {
        dir_.write("launcher.yml", text);
        return LauncherConfig::readFrom(dir_.wide(), instanceRoot);
    }
    const std::string head_ = "launcher-parameters:\n";
};

TEST_F(LauncherConfigTest, GivesTheValuesOfTheFile)
{
    const LauncherConfig config = read(head_ + R"(  # The service.
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
  pid-file: not read behind an empty list
  main-class-args:
    - not read below the key
  log-file: not read behind an empty list
  jvm-opts:
  - -Da=${instance.root}
  jvm-opts:
  - key: "-Db = c"
  main-class-args:
  - 1
  - # the empty word
  minimal-java-version: +65535
  banner:
    ru: ?
    ru: Привет, ${launcher.arch}
    default: a b
  unknown: behind the banner
other:
  x: beside it all
)",
                                       L"/root");
    EXPECT_EQ(config.getErrorMessage(), L"");
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
                              L"--jifaceclass=p.C, minimalJavaVersion=65535",
                     record + L"JVM options: options='-Da=/root;\"-Db = c\"'",
                     record + L"main class arguments: options=1;"}));
}

TEST_F(LauncherConfigTest, KeepsWhatIsWrongWithTheFile)
{
    const std::string version = head_ + "  minimal-java-version: ";
    const std::wstring unknown = L"Unknown field '", java = L"Unknown Java version '";
    const std::pair<std::string, std::wstring> cases[] = {
        {"", unknown + L"root'."},
        {"- launcher-parameters: x", unknown + L" launcher-parameters'."},
        {head_ + "  quiet: true\n  java_home: x", unknown + L"java_home'."},
        {head_ + "  - x", L"Wrong structure."},
        {head_ + "  jvm-opts:\n  - a\n  # 1", L"Wrong structure."},
        {head_ + "  banner:\n    - ru: x", L"Wrong structure."},
        {version + "7", java + L"7'."},
        {version + "65536", java + L"65536'."},
        {version + "11.0", java + L"11.0'."},
        {version + "${launcher.pid}", java + L"${launcher.pid}'."},
        {version + "99999999999", java + L"99999999999'."},
        {head_ + "  pid-file: ${instance.root}/pid",
         L"Launcher has no --instance parameter but config file has a reference to it "
         L"'${instance.root}/pid'."},
    };
    for (const auto& [text, message] : cases) {
        const LauncherConfig config = read(text);
        EXPECT_EQ(config.getErrorMessage(), at(L"Error reading file '@/launcher.yml'. " + message));
        EXPECT_EQ(config.getErrorCode(), 2u);
        EXPECT_FALSE(config.isFileRead() || config.isQuiet());
    }
    EXPECT_EQ(read(head_ + "  minimal-java-version: 8").getErrorMessage(), L"");
    read("").logState();
    EXPECT_TRUE(log_.lines().at(0).starts_with(
        at(L"ERROR LauncherConfig.logState: Cannot read file fileName=@/launcher.yml, errors=")));
}

TEST_F(LauncherConfigTest, ExpandsVariablesOneAfterTheOther)
{
    ExpansionContext context{L"/i${env.path}${launcher.", L"/l", L"/f", L"/p:${instance.root}"};
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"$${launcher.pid}}${launcher.dir}", L"$" + std::to_wstring(getpid()) + L"}/l"},
        {L"${launcher.version} ${launcher.arch}", L"3.11.1+4 x86-64"},
        {L"${Launcher.Dir} ${env.home} ${launcher.dir",
         L"${Launcher.Dir} ${env.home} ${launcher.dir"},
        // A later variable that an earlier one brings in, and one that it begins.
        {L"${instance.root}dir}", L"/i/p:${instance.root}/l"},
    };
    for (const auto& [text, expanded] : cases) EXPECT_EQ(expandVariables(context, text), expanded);

    context.instanceRoot = L"${instance.";  // each time with less of the text behind it
    EXPECT_EQ(expandVariables(context, L"${instance.root}root}root}"), L"${instance.");
    context.instanceRoot = L"${instance.root}";
    EXPECT_EQ(expandVariables(context, L"${launcher.dir}"), L"/l");
}

}  // namespace
