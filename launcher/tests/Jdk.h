// Jdk: the Java installations that the tests with a JVM run with.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "ScopedTempDir.h"

/// A feature version and its JVM library.
using Jdk = std::pair<const int, std::string>;

/// A JDK of every feature version that the tests can use, oldest first: that of
/// JAVA_HOME, and those in /usr/lib/jvm.
inline std::map<int, std::string> installedJdks()
{
    constexpr int kOldest = 17;  // what the Java classes of the tests are compiled for
    const std::regex feature("(^|\n)JAVA_VERSION=\"([0-9]+)");
    std::error_code none;
    std::vector<std::filesystem::path> homes;
    for (const auto& home : std::filesystem::directory_iterator("/usr/lib/jvm", none)) {
        homes.push_back(home);
    }
    if (const char* home = std::getenv("JAVA_HOME")) homes.emplace_back(home);
    std::map<int, std::string> jdks;
    for (const std::filesystem::path& home : homes) {
        const std::string release = readText(home / "release");
        const std::filesystem::path library = home / "lib/server/libjvm.so";
        std::smatch match;
        if (!std::regex_search(release, match, feature) || !exists(library)) continue;
        const int version = std::stoi(match[2]);
        if (version >= kOldest) jdks[version] = canonical(library);
    }
    return jdks;
}

/// The newest of them, for tests that one JDK is enough for: the first to bring changes.
inline std::map<int, std::string> newestJdk()
{
    std::map<int, std::string> jdks = installedJdks();
    while (jdks.size() > 1) jdks.erase(jdks.begin());
    return jdks;
}

/// Runs the tests of a suite, whose parameter is a Jdk, with each of `jdks`.
#define FOR_JDKS(Suite, jdks)                                                        \
    INSTANTIATE_TEST_SUITE_P(, Suite, testing::ValuesIn(jdks), [](const auto& jdk) { \
        return "Jdk" + std::to_string(jdk.param.first);                              \
    })
#define FOR_EACH_JDK(Suite) FOR_JDKS(Suite, installedJdks())
#define FOR_NEWEST_JDK(Suite) FOR_JDKS(Suite, newestJdk())
