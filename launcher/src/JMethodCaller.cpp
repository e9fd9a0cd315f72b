#include "JMethodCaller.h"

#include <chrono>
#include <exception>
#include <thread>
#include <utility>

#include "JavaExceptionText.h"
#include "JniClass.h"
#include "JvmEnv.h"
#include "LauncherException.h"
#include "LauncherJavaMethodInvocationException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "NativeThread.h"
#include "TextConversion.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr wchar_t kClass[] = L"JMethodCaller";

bool isInstanceOf(JvmEnv& env, const JniObject& object, const char* className)
{
    const JniClass type(env.get(), className);
    if (!type.isNull()) return env.get()->IsInstanceOf(object.get(), type.get()) == JNI_TRUE;
    env.ExceptionClear();
    return false;
}

}  // namespace

JMethodCaller::JMethodCaller(JavaVM* jvm, std::wstring className, std::string threadName,
                             Variants variants, Completion completion, bool isStart,
                             std::size_t stackSize)
    : className_(std::move(className)),
      variants_(std::move(variants)),
      threadName_(std::move(threadName)),
      jvm_(jvm),
      completion_(completion),
      isStart_(isStart),
      stackSize_(stackSize)
{
    if (variants_.empty()) throw LauncherException(L"Empty method call variants");
    for (const auto& variant : variants_) variant->announceCalls([this] { announceCall(); });
}

std::future<void> JMethodCaller::start()
{
    if (runRequested_.test_and_set()) {
        logError({kClass, L"start"}, L"Cannot run JMethodCaller twice");
        throw LauncherException(L"Cannot run JMethodCaller twice");
    }
    prepare(*JvmEnv::attachToExistingThread(jvm_));

    // The promise is kept before the thread is done; the task's own future
    // tells when the thread no longer touches this object or the log. This
    // object keeps that future, and by it the task: only the thread owns both.
    auto task = std::make_shared<std::packaged_task<void()>>([this] { run(); });
    std::future<void> threadEnd = task->get_future();
    startDetachedThread([self = weak_from_this().lock(), task] { (*task)(); }, stackSize_);
    threadEnd_ = std::move(threadEnd);
    return promise_.get_future();
}

bool JMethodCaller::isTargetMethodExists()
{
    const std::unique_ptr<JvmEnv> env = JvmEnv::attachToExistingThread(jvm_);
    const JniClass interfaceClass(env->get(), className_);
    if (interfaceClass.isNull()) {
        env->ExceptionClear();
        return false;
    }
    class_ = interfaceClass.newGlobalRef();
    env->registerGlobalRef(class_);
    return findApplicableVariant(*env) != nullptr;
}

void JMethodCaller::waitForCall() const
{
    // The thread may lose the processor right before the method.
    constexpr std::chrono::milliseconds kHeadStart{10};
    if (!threadEnd_.valid()) return;
    calledAt_.wait(0);
    const Clock::time_point calledAt{Clock::duration(calledAt_.load())};
    std::this_thread::sleep_until(calledAt + kHeadStart);
}

void JMethodCaller::waitForThread() const
{
    if (threadEnd_.valid()) threadEnd_.wait();
}

void JMethodCaller::prepare(JvmEnv& env)
{
    const JniClass interfaceClass(env.get(), className_);
    if (interfaceClass.isNull()) throwMainClassFindError(env);
    class_ = interfaceClass.newGlobalRef();
    const JniObject classObject(env.get(), env.NewLocalRef(class_));
    const JniObject loader =
        classObject.callObjectMethod("getClassLoader", "()Ljava/lang/ClassLoader;");
    if (env.ExceptionCheck()) throwMainClassFindError(env);
    classLoader_ = loader.newGlobalRef();
    prepared_.store(true, std::memory_order_release);
}

void JMethodCaller::run()
{
    bool succeeded = false;
    try {
        if (!prepared_.load(std::memory_order_acquire)) {
            throw LauncherException(L"JMethodCaller illegal state: data was not prepared");
        }
        internalRun();
        promise_.set_value();
        succeeded = true;
    } catch (const LauncherException&) {
        promise_.set_exception(std::current_exception());
    } catch (const std::exception& e) {
        promise_.set_exception(std::make_exception_ptr(
            LauncherException(exit_code::kOperatingSystem, toWide(e.what()))));
    }
    announceCall();  // if nothing has come of it
    if (completion_) completion_();
    logInfo({kClass, L"run"},
            succeeded ? L"Thread finished successfully" : L"Thread finished exceptionally");
}

void JMethodCaller::internalRun()
{
    const std::unique_ptr<JvmEnv> env = JvmEnv::createNewThread(jvm_, threadName_.c_str());
    env->registerGlobalRef(class_);
    env->registerGlobalRef(classLoader_);
    setContextClassLoader(*env);
    const IMethodVariant* variant = findApplicableVariant(*env);
    if (!variant) throwNoVariantFits();
    variant->call(*env, class_, className_);
}

void JMethodCaller::announceCall()
{
    std::int64_t before = 0;
    calledAt_.compare_exchange_strong(before, Clock::now().time_since_epoch().count());
    calledAt_.notify_all();
}

/// A failure is logged only: most services never ask for the class loader.
void JMethodCaller::setContextClassLoader(JvmEnv& env) const
{
    const JniClass threadClass(env.get(), "java/lang/Thread");
    const JniObject thread =
        threadClass.callStaticObjectMethod("currentThread", "()Ljava/lang/Thread;");
    logInfo({kClass, L"setContextClassLoader"}, L"Setting ClassLoader for the thread");
    if (!env.ExceptionCheck()) {
        thread.callVoidMethod("setContextClassLoader", "(Ljava/lang/ClassLoader;)V", classLoader_);
    }
    if (!env.ExceptionCheck()) return;
    const JniObject throwable(env.get(), env.ExceptionOccurred());
    logError({kClass, L"setContextClassLoader"}, L"Cannot set ContextClassLoader",
             L"javaExceptionMessage", renderJavaException(env, throwable));
}

const IMethodVariant* JMethodCaller::findApplicableVariant(JvmEnv& env) const
{
    for (const auto& variant : variants_) {
        logInfo({kClass, L"internalRun"}, L"Try to use variant of jmethod", L"variant",
                variant->toString());
        if (variant->isApplicable(env, class_, className_)) {
            logInfo({kClass, L"internalRun"}, L"Going to call JMethod in a separate thread",
                    L"variant", variant->toString(), L"class", className_);
            return variant.get();
        }
        logInfo({kClass, L"internalRun"}, L"Unable to use variant of jmethod", L"variant",
                variant->toString());
    }
    return nullptr;
}

void JMethodCaller::throwMainClassFindError(JvmEnv& env) const
{
    std::wstring logText = L"Cannot find class";
    const char* id = IDS_CANNOT_FIND_CLASS;
    const JniObject throwable(env.get(), env.ExceptionOccurred());
    if (throwable.isNull()) {
        logInfo({kClass, L"throwMainClassFindError"},
                L"Exception is NULL but the class is also NULL.");
    } else {
        const std::wstring text = renderJavaException(env, throwable);
        if (isInstanceOf(env, throwable, "java/lang/ClassFormatError")) {
            logText = L"Incorrect class format";
            id = IDS_CANNOT_LOAD_CLASS_INCORRECT_FORMAT;
        } else if (isInstanceOf(env, throwable, "java/lang/NoClassDefFoundError")) {
            logText = L"Cannot find class: " + text;
        } else {
            logText = L"Cannot load class: " + text;
            id = IDS_CANNOT_LOAD_CLASS;
        }
    }
    logInfo({kClass, L"throwMainClassFindError"}, logText, L"class", className_);
    throw LauncherException(exit_code::kInterfaceClass, formatMessage(id, className_));
}

void JMethodCaller::throwNoVariantFits() const
{
    std::wstring message =
        variants_.size() == 1 ? L"Cannot find method " : L"Cannot find any method of: ";
    for (const auto& variant : variants_) {
        if (variant != variants_.front()) message += L", ";
        message += variant->methodName();
    }
    throw LauncherException(isStart_ ? exit_code::kStartMethod : exit_code::kStopMethod, message);
}
