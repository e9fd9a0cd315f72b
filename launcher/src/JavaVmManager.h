// JavaVmManager: owns the JVM inside the launcher's process, from the loading
// of its library to its end. load(), start(), stop(), hasStopMethod() and
// unload() are for the main thread; the hooks run on whichever thread of the
// JVM ends the process. At most one JVM per process: HotSpot cannot be created
// a second time, not even after unload().
#pragma once

#include <jni.h>

#include <cstdint>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "JMethodCaller.h"

class ILibraryHandle;

class JavaVmManager final {
public:
    using Completion = JMethodCaller::Completion;
    using ExitCallback = void (*)();

    /// `className` is the interface class with slashes; `minimalJavaVersion`
    /// the lowest feature version that the application accepts.
    JavaVmManager(std::wstring className, std::int32_t minimalJavaVersion);
    /// Does not destroy the JVM: that would wait for every non-daemon Java
    /// thread, for ever if need be, also where the launcher has failed.
    ~JavaVmManager();
    JavaVmManager(const JavaVmManager&) = delete;
    JavaVmManager& operator=(const JavaVmManager&) = delete;

    /// Loads the JVM library and creates the JVM with `options`, in their
    /// order, plus the two hooks. Throws LauncherException: IDS_DLL_BAD_ARCH
    /// (code 2), IDS_UNABLE_LOAD_LIBJVM or IDS_LIBJVM_NO_CREATE_FN (4),
    /// IDS_CANNOT_CREATE_JVM_INSTANCE (4, or 5 when the version cannot be
    /// asked), IDS_CANNOT_CREATE_JVM_INSTANCE_VER (6), or what reading the
    /// file raises (20). Some options end the process inside the JVM instead.
    void load(const std::vector<std::wstring>& options, const std::wstring& jvmLibPath, int flag);

    /// Runs the interface class's start method on "launcher-start-thread"; the
    /// future and the exceptions are those of JMethodCaller::start().
    [[nodiscard]] std::future<void> start(
        const std::vector<std::wstring>& arguments,
        const std::map<std::wstring, std::wstring>& pathProperties,
        const std::map<std::wstring, bool>& booleanProperties, Completion completion);

    /// Runs "stopFast" or "stop" on "launcher-stop-thread". A future that is
    /// ready already when nothing was started. Throws LauncherException
    /// "Illegal Daemon state: stop() called twice" (21), and as start().
    [[nodiscard]] std::future<void> stop(const std::vector<std::wstring>& arguments,
                                         Completion completion, bool fast);

    /// Waits until the start method has been called, some milliseconds ago, or has failed
    /// before that: many services lose a stop that overtakes it.
    void waitForStartCall() const;

    /// Waits while the JVM holds its threads up; for ever once it ends the process, which
    /// it may do for some time before it calls the exit hook.
    void waitForSafepoint() const;

    /// True when stop() would find its method.
    [[nodiscard]] bool hasStopMethod(const std::vector<std::wstring>& arguments, bool fast) const;

    /// Waits for the threads of the two methods, destroys the JVM, which waits
    /// for all non-daemon Java threads, and drops the library. Nothing without
    /// a JVM.
    void unload();

    /// What the hooks call before the process ends; null for nothing.
    static void setExitCallback(ExitCallback callback);

private:
    void loadLibrary(const std::wstring& jvmLibPath, int flag);
    /// Gives the JVM's result; `env` is the creating thread's environment.
    jint createJvm(const std::vector<std::wstring>& options, void* createFunction, JNIEnv*& env);
    void checkVersion(JNIEnv* env, const std::wstring& jvmLibPath);
    [[nodiscard]] std::shared_ptr<JMethodCaller> newStopCaller(
        const std::vector<std::wstring>& arguments, Completion completion, bool fast) const;

    std::wstring className_;
    std::int32_t minimalJavaVersion_;
    std::shared_ptr<ILibraryHandle> library_;
    JavaVM* jvm_ = nullptr;
    std::shared_ptr<JMethodCaller> startCaller_;
    std::shared_ptr<JMethodCaller> stopCaller_;
    std::size_t stackSize_ = 0;
};

/// The JVM calls it when Java code ends the process with `exitCode`.
extern "C" void JNICALL JvmSystemExitHook(jint exitCode);
/// The JVM calls it before it aborts the process, perhaps inside a crash.
extern "C" void JNICALL JvmAbortHook();
