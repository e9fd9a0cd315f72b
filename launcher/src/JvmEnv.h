// JvmEnv: the JNI environment of the calling thread, for a scope.
// Either attaches the thread to the JVM as a new Java thread and detaches it
// at the end, or borrows the environment of a thread that is attached
// already. Lives on the stack of its thread and ends there. Strings cross in
// the modified UTF-8 of the JNI. Java exceptions stay pending unless said.
#pragma once

#include <jni.h>

#include <memory>
#include <string>
#include <vector>

class JvmEnv final {
public:
    /// The JNI version that the launcher asks for everywhere.
    static constexpr jint kJniVersion = JNI_VERSION_1_8;

    /// Attaches the calling thread under `threadName`. Throws
    /// LauncherException: IDS_CANNOT_ATTACH_NATIVE_THREAD_TO_JVM_THREAD (code
    /// 5 for a version error, 20 when attaching fails), or an internal error
    /// (21) for a null argument or a thread that is attached already.
    [[nodiscard]] static std::unique_ptr<JvmEnv> createNewThread(JavaVM* jvm,
                                                                 const char* threadName);
    /// The environment of the calling thread, attached already. Throws as
    /// createNewThread(), with an internal error (21) for a detached thread.
    [[nodiscard]] static std::unique_ptr<JvmEnv> attachToExistingThread(JavaVM* jvm);
    /// Wraps what JNI_CreateJavaVM gave; attaches and detaches nothing.
    JvmEnv(JavaVM* jvm, JNIEnv* env);
    /// Deletes the registered global references, then detaches what
    /// createNewThread() attached.
    ~JvmEnv();
    JvmEnv(const JvmEnv&) = delete;
    JvmEnv& operator=(const JvmEnv&) = delete;

    /// Takes over a global reference: deletes it at the end. Null is ignored.
    void registerGlobalRef(jobject ref);

    /// The environment itself, for JniClass, JniObject and their kin.
    [[nodiscard]] JNIEnv* get() const { return env_; }

    [[nodiscard]] jclass FindClass(const char* name) const { return env_->FindClass(name); }
    [[nodiscard]] jthrowable ExceptionOccurred() const { return env_->ExceptionOccurred(); }
    [[nodiscard]] bool ExceptionCheck() const { return env_->ExceptionCheck() == JNI_TRUE; }
    void ExceptionClear() const { env_->ExceptionClear(); }
    [[nodiscard]] jobject NewGlobalRef(jobject ref) const { return env_->NewGlobalRef(ref); }
    void DeleteGlobalRef(jobject ref) const { env_->DeleteGlobalRef(ref); }
    [[nodiscard]] jobject NewLocalRef(jobject ref) const { return env_->NewLocalRef(ref); }
    void DeleteLocalRef(jobject ref) const { env_->DeleteLocalRef(ref); }
    [[nodiscard]] jclass GetObjectClass(jobject object) const
    {
        return env_->GetObjectClass(object);
    }
    [[nodiscard]] jstring NewStringUTF(const char* text) const { return env_->NewStringUTF(text); }
    [[nodiscard]] jobjectArray NewObjectArray(jsize length, jclass elementClass) const
    {
        return env_->NewObjectArray(length, elementClass, nullptr);
    }
    void SetObjectArrayElement(jobjectArray array, jsize index, jobject value) const
    {
        env_->SetObjectArrayElement(array, index, value);
    }
    [[nodiscard]] jsize GetArrayLength(jarray array) const { return env_->GetArrayLength(array); }
    [[nodiscard]] jobject GetObjectArrayElement(jobjectArray array, jsize index) const
    {
        return env_->GetObjectArrayElement(array, index);
    }
    /// The text of a Java string, copied; empty when it cannot be read.
    [[nodiscard]] std::wstring getText(jstring string) const;

private:
    JvmEnv(JavaVM* jvm, const char* threadName);

    void attachThreadToJvmThread(const char* threadName);

    JavaVM* jvm_;
    JNIEnv* env_ = nullptr;
    bool attachedHere_ = false;
    std::vector<jobject> globalRefs_;
};
