// JMethodCaller: runs one static method of the Java interface class on a Java
// thread of its own and reports the outcome through a future. The first of
// its variants that the class declares is the one called. Shared between its
// owner and the thread that it starts, whichever lasts longer; where it has a
// sole owner, or is on the stack, its end waits for that thread (and so must not
// come from the completion).
#pragma once

#include <jni.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "IMethodVariant.h"

class JvmEnv;

class JMethodCaller final : public std::enable_shared_from_this<JMethodCaller> {
public:
    /// Called on the method's thread when the future is ready.
    using Completion = void (*)();
    using Variants = std::vector<std::unique_ptr<IMethodVariant>>;

    /// `className` has slashes; `completion` may be null; `isStart` chooses the
    /// code when no variant fits (8, else 9); `stackSize` is in bytes, 0 for
    /// the default. Throws LauncherException "Empty method call variants"
    /// (code 21) for no variants.
    JMethodCaller(JavaVM* jvm, std::wstring className, std::string threadName, Variants variants,
                  Completion completion, bool isStart, std::size_t stackSize = 0);
    ~JMethodCaller() { waitForThread(); }
    JMethodCaller(const JMethodCaller&) = delete;
    JMethodCaller& operator=(const JMethodCaller&) = delete;

    /// Loads the class on the calling thread, which must be attached, and runs
    /// the method on a new one. The future holds nothing or what failed: a
    /// LauncherJavaMethodInvocationException (code 5), or a LauncherException
    /// (8 or 9 when no variant fits, 20 for a standard exception). Throws
    /// LauncherException IDS_CANNOT_FIND_CLASS, IDS_CANNOT_LOAD_CLASS or
    /// IDS_CANNOT_LOAD_CLASS_INCORRECT_FORMAT (7), "Cannot run JMethodCaller
    /// twice" (21), or when the thread cannot be started (20).
    [[nodiscard]] std::future<void> start();

    /// True when the class is there and declares one of the variants. Calls
    /// nothing. The calling thread must be attached.
    [[nodiscard]] bool isTargetMethodExists();

    /// Blocks until the thread that start() began is calling the method, with a head
    /// start of 10 ms for its first statements, or has failed before that. Returns at
    /// once if there is none.
    void waitForCall() const;

    /// Blocks until the thread that start() began has done its very last
    /// step, later than the future is ready. Returns at once if there is none.
    void waitForThread() const;

private:
    void prepare(JvmEnv& env);
    void run();
    void internalRun();
    void announceCall();
    void setContextClassLoader(JvmEnv& env) const;
    [[nodiscard]] const IMethodVariant* findApplicableVariant(JvmEnv& env) const;
    [[noreturn]] void throwMainClassFindError(JvmEnv& env) const;
    [[noreturn]] void throwNoVariantFits() const;

    std::promise<void> promise_;
    std::wstring className_;
    Variants variants_;
    std::string threadName_;
    JavaVM* jvm_;
    std::atomic_flag runRequested_;
    // Global references; the JvmEnv that uses them last deletes them.
    jclass class_ = nullptr;
    jobject classLoader_ = nullptr;
    Completion completion_;
    std::atomic<bool> prepared_{false};      ///< publishes the references to the thread
    std::atomic<std::int64_t> calledAt_{0};  ///< by the steady clock; 0 before the call
    bool isStart_;
    std::size_t stackSize_;
    std::future<void> threadEnd_;
};
