#include "JavaVmManager.h"

#include "JvmTest.h"
#include "Raised.h"
#include "SingleArgumentMethodVariant.h"
#include "WaitUntil.h"

namespace {

using JavaVmManagerTest = JvmTest;

TEST_P(JavaVmManagerTest, RefusesAJavaBelowTheMinimalVersion)
{
    JavaVmManager manager(L"java/lang/String", 99);
    const std::wstring library = toWide(GetParam().second);
    EXPECT_EQ(raised([&] { manager.load({}, library, 0); }),
              L"6 Cannot create JVM 99 instance with library '" + library +
                  L"'. Java version is not sufficient for the application.");
    EXPECT_TRUE(log_.holds(L"INFO JavaVmManager.unload: JVM destroyed"));
}

TEST_P(JavaVmManagerTest, ReportsMissingMethodsThroughTheFutures)
{
    createJvm();
    manager_.stop({}, nullptr, false).get();  // nothing was started
    EXPECT_TRUE(
        log_.holds(L"WARN JavaVmManager.stop: Attempting to stop java process while it is "
                   L"not started"));
    EXPECT_EQ(raised([&] { manager_.start({}, {}, {}, nullptr).get(); }),
              L"8 Cannot find any method of: start, start");
    EXPECT_FALSE(manager_.hasStopMethod({}, false));
    EXPECT_EQ(raised([&] { manager_.stop({}, nullptr, true).get(); }),
              L"9 Cannot find method stopFast");
    EXPECT_EQ(raised([&] { (void)manager_.stop({}, nullptr, false); }),
              L"21 Illegal Daemon state: stop() called twice");
    manager_.unload();
    EXPECT_TRUE(log_.holds(L"INFO JMethodCaller.run: Thread finished exceptionally"));
}

TEST_P(JavaVmManagerTest, ACallerEndsWithItsThread)
{
    createJvm();
    const auto newCaller = [this] {
        JMethodCaller::Variants variants;
        variants.push_back(
            std::make_unique<SingleArgumentMethodVariant>(L"none", std::vector<std::wstring>{}));
        return std::make_unique<JMethodCaller>(jvm(), L"java/lang/String", "caller",
                                               std::move(variants), nullptr, false);
    };
    EXPECT_EQ(raised([&] { newCaller()->start().get(); }), L"9 Cannot find method none");
    std::shared_ptr<JMethodCaller> caller = newCaller();
    const std::weak_ptr<JMethodCaller> watched = caller;
    EXPECT_EQ(raised([&] { caller->start().get(); }), L"9 Cannot find method none");
    caller.reset();
    EXPECT_TRUE(waitUntil([&] { return watched.expired(); }));
}

FOR_EACH_JDK(JavaVmManagerTest);

}  // namespace
