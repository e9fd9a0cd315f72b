#include "JavaFinder.h"

#include "GraalAdapter.h"
#include "IConsole.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "Inventory.h"
#include "JavaLibResolver.h"
#include "ReleaseFileJavaChecker.h"
#include "ScopedEnvironment.h"
#include "StdoutErrorPrinter.h"
#include "UnitTest.h"

namespace {

class JavaFinderTest : public UnitTest {
protected:
    JavaFinderTest() { dir_.write("java/release", "OS_ARCH=amd64\nJAVA_VERSION=17.0.1"); }

    /// "path|errors|output" of a search for Java 17, "env:" before JAVA_HOME.
    /// The library gives what the arguments say; null unsets the variable.
    std::wstring find(const char* javaHome, const char* path = nullptr, const char* error = nullptr,
                      const char* createCode = nullptr) const
    {
        const ScopedEnvironment environment[] = {{"JAVA_HOME", javaHome},
                                                 {"FAKE_INVENTORY_PATH", path},
                                                 {"FAKE_INVENTORY_ERROR", error},
                                                 {"FAKE_INVENTORY_CREATE", createCode}};
        std::wstring consoleError;
        const auto console = os_.createConsole({}, {}, consoleError);
        StdoutErrorPrinter printer(*console);
        GraalAdapter adapter(toWide(library_), os_.getSystemUtils());
        Inventory inventory(adapter, os_);
        const ReleaseFileJavaChecker checker(os_.getFileUtils());
        InventoryAndEnvJavaFinder finder(inventory, checker, printer, os_.getProcessUtils());
        testing::internal::CaptureStdout();
        const JavaFinderResult java = finder.find(17);
        const std::wstring output = toWide(testing::internal::GetCapturedStdout());
        return (java.fromEnvironment ? L"env:" : L"") + java.path + L"|" + finder.getErrors() +
               L"|" + output;
    }

    IOsUtilsFactory& os_ = getOsUtilsFactory();
    std::string library_ = FAKE_INVENTORY;
    const std::string java_ = dir_ / "java";
    const ScopedEnvironment calls_{"FAKE_INVENTORY_CALLS", (dir_ / "calls").c_str()};
};

TEST_F(JavaFinderTest, AsksTheInventoryAndThenTheEnvironment)
{
    const char* const java = java_.c_str();
    const std::wstring fromEnvironment = at(L"env:@/java|");
    EXPECT_EQ(find(java, "/long enough for the heap/я"), L"/long enough for the heap/я||");
    EXPECT_TRUE(
        log_.holds(L"INFO Inventory.readPathToJavaComponent: Launcher have found Java "
                   L"in Inventory. path=/long enough for the heap/я"));
    EXPECT_EQ(find(java, ""), fromEnvironment + L"|");
    const std::wstring shown = L"|IDS_INVENTORY_CALL_ERROR\n";
    EXPECT_EQ(find(java, "/java", "half broken: я"), L"/java|half broken: я" + shown);
    EXPECT_EQ(find(java, nullptr, ""), fromEnvironment + shown);
    EXPECT_EQ(find(nullptr, nullptr, "oops"), L"|oops" + shown);
    EXPECT_EQ(find(java, "/java", "oops", "7"), fromEnvironment + L"|");
}

TEST_F(JavaFinderTest, LogsTheSearchAndEndsItsIsolate)
{
    const ScopedEnvironment tearDownCode("FAKE_INVENTORY_TEAR_DOWN", "3");
    const std::wstring finder = L"INFO InventoryAndEnvJavaFinder.find: ";
    const std::wstring read = L" Inventory.readPathToJavaComponent: Cannot find Java in Inventory.";
    const std::wstring graal = L" GraalAdapter.";
    const Texts found = {
        finder + L"Inventory library is initialised successfully.",
        L"INFO Inventory.readPathToJavaComponent: Isolate created",
        L"ERROR" + read + L" findJavaComponentFunc failed error=oops",
        L"INFO" + read,
        L"INFO" + graal + L"tearDownIsolate: Uninitializing VM library",
        L"ERROR" + graal + L"tearDownIsolate: Cannot uninitialize VM library code=3",
        L"INFO" + graal + L"tearDownIsolate: VM library uninitialized",
        finder + at(L"JAVA_HOME environment variable. path=@/java"),
        finder + at(L"Java from JAVA_HOME environment variable suites a product. path=@/java"),
        L"INFO" + graal + L"~GraalAdapter: Inventory library unloaded"};
    EXPECT_EQ(find(java_.c_str(), nullptr, "oops").substr(0, 4), L"env:");
    EXPECT_EQ(log_.lines(), found);
    EXPECT_EQ(readText(dir_ / "calls"), "create null\nfind 17 x86_64 " +
                                            toUtf8(os_.getProcessUtils().getExecutablePath()) +
                                            " null\nerror\ntear down\n");

    EXPECT_EQ(find(nullptr, "/java", nullptr, "7"), L"||");
    EXPECT_TRUE(log_.holds(L"ERROR" + graal +
                           L"createIsolateAndAttache: Cannot initialize Graal "
                           L"VM. Code 7."));
    EXPECT_TRUE(log_.holds(L"ERROR" + read +
                           L" Isolate creation error error=Cannot initialize Korvan Inventory "
                           L"library. Error: 7"));
    EXPECT_TRUE(log_.holds(finder + L"JAVA_HOME environment variable is empty."));
}

TEST_F(JavaFinderTest, LogsIsolatesThatAreLeft)
{
    {
        GraalAdapter opener(toWide(library_), os_.getSystemUtils());
        GraalAdapter closer(toWide(library_), os_.getSystemUtils());
        opener.load();
        closer.load();
        closer.tearDownIsolate(opener.createIsolateAndAttache());
    }
    const std::wstring record = L"ERROR GraalAdapter.~GraalAdapter: Inconsistent Graal isolates ";
    EXPECT_TRUE(log_.holds(record + L"count createdIsolatesCounter=1"));
    EXPECT_TRUE(log_.holds(record + L"count createdIsolatesCounter=-1"));
}

TEST_F(JavaFinderTest, GivesUpWithoutAFunctionOfTheLibrary)
{
    for (const std::string function :
         {"graal_create_isolate", "graal_tear_down_isolate", "findJavaComponent", "getLastError"}) {
        library_ = FAKE_INVENTORY_WITHOUT + function + ".so";
        EXPECT_EQ(find(java_.c_str()),
                  L"|Cannot load function from Korvan Inventory library at path " +
                      toWide(library_) + L". Function: " + toWide(function) + L"|");
    }
}

TEST_F(JavaFinderTest, AsksTheReleaseFileForAVersionAndA64BitArchitecture)
{
    const ReleaseFileJavaChecker checker(os_.getFileUtils());
    const auto suits = [&](const std::string& release, std::int32_t version) {
        dir_.write("release", release);
        return checker.check(dir_.wide(), version);
    };
    const std::string arch = "OS_ARCH=\"x86_64\"\r\n", version = "JAVA_VERSION=";
    const std::pair<std::string, std::int32_t> versions[] = {
        {"\"1.8.0_292\"", 8}, {"1-8", 8}, {"\"17\"", 17}, {"21-ea", 21}};
    for (const auto& [value, feature] : versions) {
        EXPECT_TRUE(suits(arch + version + value, feature)) << value;
        EXPECT_FALSE(suits(arch + version + value + "\r\n", feature + 1)) << value;
    }
    for (const std::string& other :
         {version + "17", arch, "OS_ARCH=i386\n" + version + "17", " " + arch + version + "17",
          "OS_ARCH=" + arch + version + "17", arch + version + "17\n" + version + "8.0",
          arch + version + "9", arch + version + "\"", arch + version + "1.",
          arch + version + "17u.0", arch + version + "4294967313", arch + version + "１７"}) {
        EXPECT_FALSE(suits(other, 9)) << other;
    }
    EXPECT_FALSE(checker.check(dir_.wide("missing"), 8));
    EXPECT_EQ(log_.lines(), Texts{});
    EXPECT_FALSE(checker.check(dir_.wide("release"), 8));
    EXPECT_NE(log_.lines().at(0).find(L"(20) Not a directory"), std::wstring::npos);
}

TEST_F(JavaFinderTest, PrefersTheLibraryOfTheOlderLayouts)
{
    for (const char* place :
         {"lib/server/libjvm.so", "lib/amd64/server/libjvm.so", "jre/lib/amd64/server/libjvm.so"}) {
        dir_.write(place, "");
        EXPECT_EQ(JavaLibResolver().resolve(dir_.wide()), dir_.wide(place));
        EXPECT_EQ(JavaLibResolver().resolve(dir_.wide() + L"/"), dir_.wide(place));
    }
    const std::string withBackslash = dir_.write("\\jre/lib/amd64/server/libjvm.so", "");
    EXPECT_EQ(JavaLibResolver().resolve(dir_.wide("\\")), toWide(withBackslash));
}

}  // namespace
