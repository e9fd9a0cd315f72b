#include "JavaFinder.h"

#include <stdexcept>

#include "GraalAdapter.h"
#include "IConsole.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "Inventory.h"
#include "ReleaseFileJavaChecker.h"
#include "ScopedEnvironment.h"
#include "StdoutErrorPrinter.h"
#include "UnitTest.h"

namespace {

class Lines final : public IConsole {
public:
    void writeLine(const std::wstring& line) override { text += line + L"\n"; }
    void write(const std::wstring&) override {}
    void writeError(const std::wstring&) override {}
    void writeErrorLine(const std::wstring&) override {}

    std::wstring text;
};

class ThrowingConsumer final : public IInventoryErrorConsumer {
public:
    void consume(const char* text) override { throw std::runtime_error(text); }
};

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
        Lines output;
        StdoutErrorPrinter printer(output);
        GraalAdapter adapter(toWide(library_), os_.getSystemUtils());
        Inventory inventory(adapter, os_);
        const ReleaseFileJavaChecker checker(os_.getFileUtils());
        InventoryAndEnvJavaFinder finder(inventory, checker, printer, os_.getProcessUtils());
        const JavaFinderResult java = finder.find(17);
        return (java.fromEnvironment ? L"env:" : L"") + java.path + L"|" + finder.getErrors() +
               L"|" + output.text;
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
    EXPECT_EQ(log_.lines()[2],
              L"INFO Inventory.readPathToJavaComponent: Launcher have found Java "
              L"in Inventory. path=/long enough for the heap/я");
    EXPECT_EQ(find(java), fromEnvironment + L"|");
    EXPECT_EQ(find(java, ""), fromEnvironment + L"|");
    dir_.write("old/release", "OS_ARCH=amd64\nJAVA_VERSION=16.0.2");
    EXPECT_EQ(find((dir_ / "old").c_str()), L"||");
    EXPECT_EQ(find(""), L"||");

    const std::wstring shown = L"|IDS_INVENTORY_CALL_ERROR\n";
    EXPECT_EQ(find(java, "/java", "half broken: я"), L"/java|half broken: я" + shown);
    EXPECT_EQ(find(java, nullptr, ""), fromEnvironment + shown);
    EXPECT_EQ(find(nullptr, nullptr, "oops"), L"|oops" + shown);
    EXPECT_EQ(find(java, "/java", "oops", "7"), fromEnvironment + L"|");
}

TEST_F(JavaFinderTest, LogsTheSearch)
{
    const std::wstring finder = L"INFO InventoryAndEnvJavaFinder.find: ";
    const std::wstring read = L" Inventory.readPathToJavaComponent: ";
    const std::wstring graal = L" GraalAdapter.";
    const Texts found = {
        finder + L"Inventory library is initialised successfully.",
        L"INFO" + read + L"Isolate created",
        L"ERROR" + read + L"Cannot find Java in Inventory. findJavaComponentFunc failed error=oops",
        L"INFO" + read + L"Cannot find Java in Inventory.",
        L"INFO" + graal + L"tearDownIsolate: Uninitializing VM library",
        L"INFO" + graal + L"tearDownIsolate: VM library uninitialized",
        finder + at(L"JAVA_HOME environment variable. path=@/java"),
        finder + at(L"Java from JAVA_HOME environment variable suites a product. path=@/java"),
        L"INFO" + graal + L"~GraalAdapter: Inventory library unloaded"};
    EXPECT_EQ(find(java_.c_str(), nullptr, "oops").substr(0, 4), L"env:");
    EXPECT_EQ(log_.lines(), found);
    EXPECT_EQ(find(nullptr, "/java", nullptr, "7"), L"||");
    EXPECT_TRUE(log_.holds(L"ERROR" + graal +
                           L"createIsolateAndAttache: Cannot initialize Graal VM. Code 7."));
    EXPECT_TRUE(log_.holds(L"ERROR" + read +
                           L"Cannot find Java in Inventory. Isolate creation error error=Cannot "
                           L"initialize Korvan Inventory library. Error: 7"));
    EXPECT_TRUE(log_.holds(finder + L"JAVA_HOME environment variable is empty."));
}

TEST_F(JavaFinderTest, GivesUpWithoutTheLibraryOrOneOfItsFunctions)
{
    for (const std::string function :
         {"graal_create_isolate", "graal_tear_down_isolate", "findJavaComponent", "getLastError"}) {
        library_ = FAKE_INVENTORY_WITHOUT + function + ".so";
        EXPECT_EQ(find(java_.c_str()),
                  L"|Cannot load function from Korvan Inventory library at path " +
                      toWide(library_) + L". Function: " + toWide(function) + L"|");
    }
    EXPECT_FALSE(std::filesystem::exists(dir_ / "calls"));
    library_ = dir_ / "no.so";
    EXPECT_EQ(find(java_.c_str()),
              at(L"|Cannot load Korvan inventory library looking at path @/no.so. Error: @/no.so: "
                 L"cannot open shared object file: No such file or directory|"));
    EXPECT_EQ(log_.lines().back(), L"INFO GraalAdapter.~GraalAdapter: Inventory library unloaded");
}

TEST_F(JavaFinderTest, EveryQueryEndsItsIsolateWhateverHappens)
{
    const ScopedEnvironment error("FAKE_INVENTORY_ERROR", "oops");
    GraalAdapter adapter(toWide(library_), os_.getSystemUtils());
    Inventory inventory(adapter, os_);
    inventory.initialize();
    ThrowingConsumer consumer;
    std::string calls;
    for (const std::string isolate : {"1", "2"}) {
        EXPECT_THROW(static_cast<void>(inventory.readPathToJavaComponent(17, consumer)),
                     std::runtime_error);
        calls += "create null\nfind " + isolate + " 17 x86_64 " +
                 toUtf8(os_.getProcessUtils().getExecutablePath()) + " null\nerror " + isolate +
                 "\ntear down " + isolate + "\n";
    }
    EXPECT_EQ(readText(dir_ / "calls"), calls);
}

TEST_F(JavaFinderTest, LogsIsolatesThatAreLeft)
{
    const ScopedEnvironment code("FAKE_INVENTORY_TEAR_DOWN", "3");
    {
        GraalAdapter opener(toWide(library_), os_.getSystemUtils());
        GraalAdapter closer(toWide(library_), os_.getSystemUtils());
        opener.load();
        closer.load();
        closer.tearDownIsolate(opener.createIsolateAndAttache());
    }
    const std::wstring inconsistent =
        L"ERROR GraalAdapter.~GraalAdapter: Inconsistent Graal "
        L"isolates count createdIsolatesCounter=";
    EXPECT_TRUE(log_.holds(inconsistent + L"1") && log_.holds(inconsistent + L"-1"));
    const std::wstring ended = L" GraalAdapter.tearDownIsolate: ";
    EXPECT_EQ(log_.lines()[1], L"ERROR" + ended + L"Cannot uninitialize VM library code=3");
    EXPECT_EQ(log_.lines()[2], L"INFO" + ended + L"VM library uninitialized");
}

}  // namespace
