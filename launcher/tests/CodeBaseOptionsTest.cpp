#include "CodeBaseOptions.h"

#include <set>

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
        {L"*.jar", {L"имя.jar"}},
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
    for (const wchar_t* path : {L"li*/x.jar", L"li?/x.jar"}) {
        EXPECT_TRUE(
            raised([&] { return resolveWildcards(path); }).starts_with(L"2 Only file names"));
    }
    std::filesystem::current_path("/");
}

}  // namespace
