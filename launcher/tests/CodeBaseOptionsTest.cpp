#include "CodeBaseOptions.h"

#include <set>
#include <tuple>

#include "UnitTest.h"

namespace {

using CodeBaseOptionsTest = UnitTest;

TEST_F(CodeBaseOptionsTest, ResolvesMasksFilesAndDirectories)
{
    for (const char* name :
         {"lib/app.jar", "lib/myapp.jar", "lib/app-jar.txt", "lib/sub/deep.jar", "имя.jar"}) {
        dir_.write(name, "");
    }
    std::filesystem::create_symlink("../lib", dir_ / "lib/link.jar");  // lists as a file
    std::filesystem::create_symlink("none", dir_ / "lib/dangling");
    std::filesystem::current_path(dir_.path());
    const std::pair<std::wstring, std::set<std::wstring>> cases[] = {
        {L"", {}},
        {L"lib",
         {L"lib/app-jar.txt", L"lib/app.jar", L"lib/dangling", L"lib/link.jar", L"lib/myapp.jar"}},
        {L"lib/d*g:?.jar", {L"lib/dangling"}},
        // Unanchored, and '.' stands for any character.
        {L"lib\\app.jar", {L"lib/app-jar.txt", L"lib/app.jar", L"lib/myapp.jar"}},
        {at(L":@/lib/sub/:lib/none.jar::lib/no/*:*r$"), {L"lib/sub/deep.jar", L"имя.jar"}},
    };
    for (const auto& [pathList, names] : cases) {
        std::wistringstream stream(resolveWildcards(pathList));
        std::set<std::wstring> found;
        for (std::wstring file; std::getline(stream, file, L':');) {
            found.insert(file.substr(at(L"@/").size()));
        }
        EXPECT_EQ(found, names);
    }
    EXPECT_EQ(log_.count(L"WARN Daemon.resolveWildcards: Skipping empty file mask"), 2);
    EXPECT_TRUE(
        raised([] { return resolveWildcards(L"li?/x.jar"); }).starts_with(L"2 Only file names"));
    std::filesystem::current_path("/");
}

TEST_F(CodeBaseOptionsTest, WarnsOfEntriesThatAreNoneOfJava)
{
    const std::wstring more = L"Path entry also matches other files pathMask=";
    const std::wstring wrong = L"Path entry does not match the file that it names pathMask=";
    const std::tuple<std::string, std::string, std::wstring, std::wstring> cases[] = {
        {"app.jar", "app.jar.bak", more, L"^app.jar$"},
        {"b.jar", "b-jar", more, L"^b[.]jar$"},
        {"c[1].jar", "c1.jar", wrong, L"^c[[]1][.]jar$"},
        {"d*^", "d.^", more, L"^d[)-+]^$"},
    };
    const std::wstring start = L"WARN Daemon.resolveWildcards: ";
    for (const auto& [name, other, message, instead] : cases) {
        const std::wstring entry = at(L"@/") + toWide(name);
        dir_.write(name, "");
        dir_.write(other, "");
        std::ignore = resolveWildcards(entry);
        EXPECT_EQ(log_.lines().back(), start + message + entry + L", others=" + toWide(other) +
                                           L", count=1, instead=" + at(L"@/") + instead);
        EXPECT_EQ(resolveWildcards(at(L"@/") + instead), entry);
        EXPECT_TRUE(log_.lines().back().starts_with(L"INFO"));
    }
    dir_.write("f[", "");
    EXPECT_NE(raised([this] { return resolveWildcards(at(L"@/f[")); }), L"nothing raised");
    EXPECT_EQ(log_.lines().back(), at(start + wrong + L"@/f[, others=, count=0, instead=@/^f[[]$"));
}

TEST_F(CodeBaseOptionsTest, WarnsOfDirectoriesWithoutArchives)
{
    const std::pair<std::string, std::wstring> files[] = {
        // as they come, one after the other
        {"conf/package/app.properties", L"a jar of it"},
        {"conf/app.properties", at(L"'--jvmopt=-Xbootclasspath/a:@/conf'")},
        {"conf/App.class", L"a jar of it"},
    };
    std::filesystem::create_directory(dir_ / "conf");
    std::ignore = resolveWildcards(at(L"@/conf"));
    EXPECT_TRUE(log_.lines().back().starts_with(L"INFO"));  // empty
    const std::wstring record =
        at(L"WARN Daemon.resolveWildcards: Class path directory holds no archive pathMask=@/conf, "
           L"instead=");
    for (const auto& [file, instead] : files) {
        dir_.write(file, "");
        std::ignore = resolveWildcards(at(L"@/conf/"));
        EXPECT_EQ(log_.lines().back(), record + instead) << file;
    }
    dir_.write("conf/A.JAR", "");
    std::ignore = resolveWildcards(at(L"@/conf"));
    EXPECT_TRUE(log_.lines().back().starts_with(L"INFO"));
}

}  // namespace
