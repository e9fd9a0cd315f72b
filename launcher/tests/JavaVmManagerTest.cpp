// A real JVM in the test's own process, with every JDK.
#include "JavaVmManager.h"

#include <dlfcn.h>
#include <jni.h>

#include <thread>

#include "Jdk.h"
#include "JniClass.h"
#include "JvmEnv.h"
#include "UnitTest.h"

namespace {

class JavaVmManagerTest : public UnitTest, public testing::WithParamInterface<Jdk> {
protected:
    ~JavaVmManagerTest() override { manager_.unload(); }

    const std::wstring library_ = toWide(GetParam().second);
    JavaVmManager manager_{L"java/lang/String", 8};
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
    manager_.load({L"-XX:-UsePerfData"}, library_, 0);
    manager_.stop({}, nullptr, false).get();
    EXPECT_EQ(log_.lines().back(),
              L"WARN JavaVmManager.stop: Attempting to stop java process while it is not started");
    EXPECT_EQ(raised([&] { manager_.start({}, {}, {}, nullptr).get(); }),
              L"8 Cannot find any method of: start, start");
    EXPECT_EQ(raised([&] { manager_.stop({}, nullptr, true).get(); }),
              L"9 Cannot find method stopFast");
    EXPECT_EQ(raised([&] { (void)manager_.stop({}, nullptr, false); }),
              L"21 Illegal Daemon state: stop() called twice");
    manager_.unload();
    EXPECT_TRUE(log_.holds(L"INFO JMethodCaller.run: Thread finished exceptionally"));
}

class JvmEnvTest : public JavaVmManagerTest {
protected:
    void SetUp() override
    {
        manager_.load({L"-XX:-UsePerfData"}, library_, 0);
        using Getter = jint(JNICALL*)(JavaVM**, jsize, jsize*);
        void* const library = dlopen(GetParam().second.c_str(), RTLD_NOW | RTLD_NOLOAD);
        jsize count = 0;
        reinterpret_cast<Getter>(dlsym(library, "JNI_GetCreatedJavaVMs"))(&jvm_, 1, &count);
    }

    JavaVM* jvm_ = nullptr;
};

TEST_P(JvmEnvTest, RefusesThreadsInTheWrongState)
{
    EXPECT_EQ(raised([&] { (void)JvmEnv::createNewThread(jvm_, "again"); }),
              L"21 Illegal thread state: JvmEnv::createNewThread() was called but current thread "
              L"is already attached to a JVM thread");
    std::thread([&] {
        EXPECT_EQ(raised([&] { (void)JvmEnv::attachToExistingThread(jvm_); }),
                  L"21 Illegal thread state: JvmEnv::attachToExistingThread() was called but "
                  L"current thread is detached from a JVM thread");
    }).join();
}

TEST_P(JvmEnvTest, ExchangesEveryKindOfCharacterAndReportsWhatAClassDoesNotHave)
{
    const auto env = JvmEnv::attachToExistingThread(jvm_);
    std::wstring text = L"\xffff\x10000😀\x10ffff";
    for (wchar_t c = 1; c <= 0x801; ++c) text += c;
    const JniObject string = JniObject::newString(env->get(), text);
    EXPECT_EQ(env->getText(static_cast<jstring>(string.get())), text);

    const JniClass strings(env->get(), "java/lang/String");
    EXPECT_TRUE(strings.hasStaticMethod("valueOf", "(I)Ljava/lang/String;"));
    EXPECT_FALSE(strings.hasStaticMethod("valueOf", "(I)V"));
    EXPECT_FALSE(env->ExceptionCheck());
    EXPECT_EQ(raised([&] { strings.callStaticVoidMethod(L"старт", "()V"); }),
              L"5 Cannot find function 'старт' in class 'java/lang/String'");
    env->ExceptionClear();
    EXPECT_EQ(raised([&] { (void)strings.getStaticObjectField("NONE", "I"); }),
              L"5 IDS_CANNOT_FIND_JFIELD");
    env->ExceptionClear();
}

FOR_EACH_JDK(JavaVmManagerTest);
FOR_EACH_JDK(JvmEnvTest);

}  // namespace
