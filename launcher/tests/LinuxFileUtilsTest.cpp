#include "LinuxFileUtils.h"

#include "FileContent.h"
#include "UnitTest.h"

namespace fs = std::filesystem;

namespace {

class LinuxFileUtilsTest : public UnitTest {
protected:
    LinuxFileUtilsTest() { fs::current_path(dir_.path()); }
    ~LinuxFileUtilsTest() override { fs::current_path("/"); }

    const LinuxFileUtils files_;
};

TEST_F(LinuxFileUtilsTest, CreatesMissingDirectoriesExceptTopLevelOnes)
{
    files_.createDirectories(dir_.wide("a/b//c/"));
    files_.createParentDirectories(L"a/x/file");
    EXPECT_TRUE(fs::is_directory("a/b/c") && fs::is_directory("a/x") && fs::is_empty("a/x"));
    files_.createDirectories(L"//launcher-test-top");
    EXPECT_FALSE(fs::exists("/launcher-test-top"));
    EXPECT_EQ(raised([&] { files_.createDirectories(L"top/b/c"); }),
              L"20 Unable to resolve path 'top/b'. Error: (2) No such file or directory");
    // Deeper than the stack could follow, if each level took a call.
    std::wstring deep = std::wstring(300, L'n');
    for (int i = 0; i < 60'000; ++i) deep += L"/d";
    EXPECT_TRUE(raised([&] { files_.createDirectories(deep); }).ends_with(L"File name too long"));
}

TEST_F(LinuxFileUtilsTest, TouchesAndDeletesFiles)
{
    fs::create_symlink(dir_.path(), "link");
    fs::create_symlink("nowhere", "dangling");
    dir_.write("file", "");
    EXPECT_EQ(files_.touchFile(L"link/./новый"), dir_.wide("новый"));
    EXPECT_EQ(raised([&] { files_.deleteFile(L"file/x"); }),
              L"20 Cannot delete file 'file/x'. Error: (20) Not a directory");
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_TRUE(files_.deleteFile(L"file") && files_.deleteFile(L"dangling"));
    EXPECT_FALSE(files_.deleteFile(L"file"));
}

TEST_F(LinuxFileUtilsTest, ReadsWholeFilesAndNamesTheOneThatItCannotUse)
{
    dir_.write("file", std::string("a\0\xFF", 3));
    fs::resize_file("file", 10'485'760);  // the most that it reads
    const std::shared_ptr<FileContent> content = files_.readFile(L"file");
    EXPECT_EQ(std::string(content->data(), 4), std::string("a\0\xFF\0", 4));
    EXPECT_EQ(content->size(), 10'485'760u);
    dir_.write("class3", std::string("\177ELF\3", 5) + std::string(11, '\0'));
    EXPECT_EQ(raised([&] { return files_.getBinaryType(L"class3"); }),
              L"20 Unknown binary type of library 'class3'");
    EXPECT_EQ(raised([&] { return files_.listFiles(L".\\", L"[*"); }),
              L"20 Cannot read file './[*'. Error: (22) Invalid argument");
    const std::wstring online = L"/sys/devices/system/cpu/online";
    if (!fs::exists(online)) GTEST_SKIP() << "no file that holds less than its size";
    EXPECT_EQ(raised([&] { return files_.readFile(online); }),
              L"20 Cannot read file '" + online + L"'. Error: (61) No data available");
}

}  // namespace
