#include "IgnoredJvmOptions.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Options = std::vector<std::wstring>;

/// Those of the options that there is advice on.
Options advised(const Options& options)
{
    IgnoredJvmOptions ignored;
    Options result;
    for (const std::wstring& option : options) {
        if (ignored.adviceOn(option)) result.push_back(option);
    }
    return result;
}

TEST(IgnoredJvmOptionsTest, AdvisesOnceOnEachOptionThatTheJvmSkips)
{
    const std::pair<Options, Options> cases[] = {
        {{L"-cp", L"a.jar", L"-jar", L"-Xmx1g", L"b.jar"}, {L"-cp", L"-jar", L"b.jar"}},
        {{L"--add-opens", L"a/b=c", L"-javaagent", L"a.jar", L"--source", L"17"},
         {L"--add-opens", L"-javaagent", L"--source"}},
        {{L"--class-path=a", L"@a", L"b", L" -Xmx1g", L""},
         {L"--class-path=a", L"@a", L"b", L" -Xmx1g", L""}},
        // What a JVM reads, or may read one day.
        {{L"-Djava.class.path=a", L"--module-path=a", L"--add-opens=a/b=c", L"-XX:+New", L"-Xnew",
          L"--new", L"-da", L"-javaagent:a.jar", L"-verbose:gc", L"--enable-preview"},
         {}},
    };
    for (const auto& [options, skipped] : cases) EXPECT_EQ(advised(options), skipped);

    EXPECT_EQ(IgnoredJvmOptions().adviceOn(L"--add-opens"), L"one word, --add-opens=VALUE");
    EXPECT_EQ(IgnoredJvmOptions().adviceOn(L"-jar"), L"--jclasspath and --jifaceclass");
}

}  // namespace
