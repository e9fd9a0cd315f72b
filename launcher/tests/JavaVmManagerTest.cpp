// A real JVM in the test's own process, with every JDK.
#include "JavaVmManager.h"

#include "Jdk.h"
#include "UnitTest.h"

namespace {

class JavaVmManagerTest : public UnitTest, public testing::WithParamInterface<Jdk> {};

TEST_P(JavaVmManagerTest, RefusesAJavaBelowTheMinimalVersion)
{
    const std::wstring library = toWide(GetParam().second);
    JavaVmManager manager(L"java/lang/String", 99);
    EXPECT_EQ(raised([&] { manager.load({}, library, 0); }),
              L"6 Cannot create JVM 99 instance with library '" + library +
                  L"'. Java version is not sufficient for the application.");
    EXPECT_TRUE(log_.holds(L"INFO JavaVmManager.unload: JVM destroyed"));
}

FOR_EACH_JDK(JavaVmManagerTest);

}  // namespace
