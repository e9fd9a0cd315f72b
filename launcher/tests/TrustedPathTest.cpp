#include "TrustedPath.h"

#include <cerrno>

#include "UnitTest.h"

namespace {

using TrustedPathTest = UnitTest;

TEST_F(TrustedPathTest, StaysWhereItHasLed)
{
    dir_.write("d/file", "inside");
    dir_.write("outside/file", "kept");
    const TrustedPath place(dir_ / "d/file");
    const FileDescriptor file = place.open(O_RDWR);
    EXPECT_EQ(fcntl(file.get(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_TRUE(leadsTo(dir_ / "d/file", file));

    // Somebody puts a link in the place of the file, or of the directory.
    std::filesystem::remove(dir_ / "d/file");
    std::filesystem::create_symlink("../outside/file", dir_ / "d/file");
    EXPECT_FALSE(place.open(O_RDWR | O_CREAT).isOpen());
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(place.unlink(), 0);
    std::filesystem::rename(dir_ / "d", dir_ / "moved");
    std::filesystem::create_symlink("outside", dir_ / "d");
    EXPECT_TRUE(place.open(O_RDWR | O_CREAT).isOpen());
    EXPECT_EQ(place.renameToFree("file.1"), 0);
    EXPECT_TRUE(std::filesystem::exists(dir_ / "moved/file.1"));
    EXPECT_EQ(readText(dir_ / "outside/file"), "kept");
}

}  // namespace
