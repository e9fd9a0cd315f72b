// A real JVM in the test's own process, with every JDK.
#include "JavaVmManager.h"

#include "Jdk.h"
#include "UnitTest.h"

namespace {

class JavaVmManagerTest : public UnitTest, public testing::WithParamInterface<Jdk> {
protected:
    const std::wstring library_ = toWide(GetParam().second);
};

TEST_P(JavaVmManagerTest, RefusesAJavaBelowTheMinimalVersion)
{
    JavaVmManager manager(L"java/lang/String", 99);
    EXPECT_EQ(raised([&] { manager.load({}, library_, 0); }),
              L"6 Cannot create JVM 99 instance with library '" + library_ +
                  L"'. Java version is not sufficient for the application.");
    EXPECT_TRUE(log_.holds(L"INFO JavaVmManager.unload: JVM destroyed"));
}

TEST_P(JavaVmManagerTest, ReportsMissingMethodsThroughTheFutures)
{
    JavaVmManager manager(L"java/lang/String", 8);
    manager.load({L"-XX:-UsePerfData"}, library_, 0);
    manager.stop({}, nullptr, false).get();
    EXPECT_EQ(log_.lines().back(),
              L"WARN JavaVmManager.stop: Attempting to stop java process while it is not started");
    EXPECT_EQ(raised([&] { manager.start({}, {}, {}, nullptr).get(); }),
              L"8 Cannot find any method of: start, start");
    EXPECT_EQ(raised([&] { manager.stop({}, nullptr, true).get(); }),
              L"9 Cannot find method stopFast");
    EXPECT_EQ(raised([&] { (void)manager.stop({}, nullptr, false); }),
              L"21 Illegal Daemon state: stop() called twice");
    manager.unload();
    EXPECT_TRUE(log_.holds(L"INFO JMethodCaller.run: Thread finished exceptionally"));
}

FOR_EACH_JDK(JavaVmManagerTest);

}  // namespace
