#include "JvmEnv.h"

#include <thread>

#include "JniClass.h"
#include "JvmTest.h"
#include "Raised.h"

namespace {

using JvmEnvTest = JvmTest;

TEST_P(JvmEnvTest, RefusesThreadsInTheWrongState)
{
    createJvm();
    EXPECT_EQ(raised([&] { (void)JvmEnv::createNewThread(jvm(), "again"); }),
              L"21 Illegal thread state: JvmEnv::createNewThread() was called but current thread "
              L"is already attached to a JVM thread");
    std::thread([&] {
        EXPECT_EQ(raised([&] { (void)JvmEnv::attachToExistingThread(jvm()); }),
                  L"21 Illegal thread state: JvmEnv::attachToExistingThread() was called but "
                  L"current thread is detached from a JVM thread");
    }).join();
}

TEST_P(JvmEnvTest, ExchangesEveryKindOfCharacterExactly)
{
    createJvm();
    const auto env = JvmEnv::attachToExistingThread(jvm());
    std::wstring text(1, L'\0');
    for (wchar_t c = 1; c <= 0x10ffff; c += c < 0x900 ? 1 : 997) {
        if (c < 0xd800 || c > 0xdfff) text += c;
    }
    text += L"😀\x10ffff";
    const JniObject string = JniObject::newString(env->get(), text);
    EXPECT_EQ(env->getText(static_cast<jstring>(string.get())), text);
    const jint units = string.callIntMethod("length", "()I");
    const jint codePoints = string.callIntMethod("codePointCount", "(II)I", 0, units);
    EXPECT_EQ(codePoints, static_cast<jint>(text.size()));
}

TEST_P(JvmEnvTest, ReportsWhatAClassDoesNotHave)
{
    createJvm();
    const auto env = JvmEnv::attachToExistingThread(jvm());
    JniClass given(env->get(), "java/lang/String"), strings(env->get(), "java/lang/Object");
    strings = std::move(given);
    EXPECT_TRUE(given.isNull());  // NOLINT: what was moved from is tested
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

FOR_EACH_JDK(JvmEnvTest);

}  // namespace
