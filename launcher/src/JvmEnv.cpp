#include "JvmEnv.h"

#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

namespace {

[[noreturn]] void raiseCannotAttach(std::uint32_t exitCode)
{
    throw LauncherException(exitCode, getMessage(IDS_CANNOT_ATTACH_NATIVE_THREAD_TO_JVM_THREAD));
}

}  // namespace

std::unique_ptr<JvmEnv> JvmEnv::createNewThread(JavaVM* jvm, const char* threadName)
{
    if (!threadName) {
        throw LauncherException(
            L"Illegal argument: must create calling thread with a nonnull name");
    }
    return std::unique_ptr<JvmEnv>(new JvmEnv(jvm, threadName));
}

std::unique_ptr<JvmEnv> JvmEnv::attachToExistingThread(JavaVM* jvm)
{
    const char* const noName = nullptr;
    return std::unique_ptr<JvmEnv>(new JvmEnv(jvm, noName));
}

JvmEnv::JvmEnv(JavaVM* jvm, JNIEnv* env) : jvm_(jvm), env_(env) {}

JvmEnv::JvmEnv(JavaVM* jvm, const char* threadName) : jvm_(jvm)
{
    if (!jvm) throw LauncherException(L"JvmEnv illegal state: jvm must not be null");
    attachThreadToJvmThread(threadName);
}

JvmEnv::~JvmEnv()
{
    for (jobject ref : globalRefs_) env_->DeleteGlobalRef(ref);
    if (attachedHere_) jvm_->DetachCurrentThread();
}

void JvmEnv::registerGlobalRef(jobject ref)
{
    if (ref) globalRefs_.push_back(ref);
}

std::wstring JvmEnv::getText(jstring string) const
{
    const char* characters = env_->GetStringUTFChars(string, nullptr);
    if (!characters) return L"";
    std::wstring text = fromModifiedUtf8(characters);
    env_->ReleaseStringUTFChars(string, characters);
    return text;
}

/// With a name the thread must be detached, without one attached.
void JvmEnv::attachThreadToJvmThread(const char* threadName)
{
    void* env = nullptr;
    const jint state = jvm_->GetEnv(&env, kJniVersion);
    if (state == JNI_EVERSION) {
        logError({L"JvmEnv", L"attachThreadToJvmThread"},
                 L"Cannot attache native thread to JVM thread. Version error.");
        raiseCannotAttach(exit_code::kJavaInvocation);
    }
    if (state == JNI_OK) {
        if (threadName) {
            throw LauncherException(
                L"Illegal thread state: JvmEnv::createNewThread() was called but current thread "
                L"is already attached to a JVM thread");
        }
        env_ = static_cast<JNIEnv*>(env);
        return;
    }
    if (!threadName) {
        throw LauncherException(
            L"Illegal thread state: JvmEnv::attachToExistingThread() was called but current "
            L"thread is detached from a JVM thread");
    }
    std::string name = threadName;  // the JNI takes it as writable
    JavaVMAttachArgs arguments{kJniVersion, name.data(), nullptr};
    if (jvm_->AttachCurrentThread(&env, &arguments) != JNI_OK) {
        logError({L"JvmEnv", L"attachThreadToJvmThread"},
                 L"Cannot attache native thread to JVM thread. Detached.");
        raiseCannotAttach(exit_code::kOperatingSystem);
    }
    env_ = static_cast<JNIEnv*>(env);
    attachedHere_ = true;
}
