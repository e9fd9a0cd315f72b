#include "JavaVmManager.h"

#include <array>
#include <atomic>
#include <chrono>
#include <exception>
#include <new>
#include <utility>

#include "CrashWatchdog.h"
#include "IFileUtils.h"
#include "ILibraryHandle.h"
#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "ISystemUtils.h"
#include "IgnoredJvmOptions.h"
#include "JavaStackSize.h"
#include "JavaVersion.h"
#include "JniClass.h"
#include "JvmEnv.h"
#include "JvmSuspendSignal.h"
#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "SingleArgumentMethodVariant.h"
#include "TextConversion.h"
#include "TwoArgumentsMethodVariant.h"

namespace {

constexpr wchar_t kClass[] = L"JavaVmManager";
constexpr std::int32_t kUnknownVersion = 65535;  ///< passes every check

/// How long a crashing process waits for the log.
constexpr std::chrono::milliseconds kCrashLogPatience{2000};

using CreateFunction = jint(JNICALL*)(JavaVM**, void**, void*);

// What the hooks call; the only state that they share with the launcher.
std::atomic<JavaVmManager::ExitCallback> exitCallback{nullptr};

const wchar_t* jniResultName(jint result)
{
    static constexpr std::array<const wchar_t*, 7> kNames{
        L"success",           L"unknown error",     L"thread detached from the VM",
        L"version error",     L"not enough memory", L"VM already created",
        L"invalid arguments",
    };
    const auto index = -static_cast<long>(result);
    const bool known = index >= 0 && index < static_cast<long>(kNames.size());
    return known ? kNames[static_cast<std::size_t>(index)] : L"#bad code#";
}

[[noreturn]] void raiseCreationFailure(std::uint32_t exitCode, const std::wstring& message,
                                       const std::wstring& jvmLibPath, jint result)
{
    logError({kClass, L"load"}, message, L"jvmLibPath", jvmLibPath, L"code", result);
    throw LauncherException(exitCode, message);
}

/// The options go into the log before the JVM sees them: some end the process
/// there, and others it skips without a word.
void logOptions(const std::vector<std::wstring>& options)
{
    IgnoredJvmOptions ignored;
    for (const std::wstring& option : options) {
        logInfo({kClass, L"load"}, L"JVM argument", L"JVM argument", option);
        if (const auto advice = ignored.adviceOn(option)) {
            logWarn({kClass, L"load"}, L"JVM argument has no effect", L"JVM argument", option,
                    L"instead", *advice);
        }
    }
}

void flushLog()
{
    getLogger().flush();
}

/// The options as the JVM takes them, with the hooks behind. Owns the texts.
class JvmOptionArray final {
public:
    explicit JvmOptionArray(const std::vector<std::wstring>& options)
    {
        texts_.reserve(options.size() + 2);
        for (const std::wstring& option : options) add(toUtf8(option), nullptr);
        add("exit", reinterpret_cast<void*>(&JvmSystemExitHook));
        add("abort", reinterpret_cast<void*>(&JvmAbortHook));
    }

    [[nodiscard]] JavaVMOption* data() { return options_.data(); }
    [[nodiscard]] jint size() const { return static_cast<jint>(options_.size()); }

private:
    void add(std::string text, void* extraInfo)
    {
        texts_.push_back(std::move(text));
        // Writable memory: HotSpot cuts some options up in place.
        options_.push_back({texts_.back().data(), extraInfo});
    }

    std::vector<std::string> texts_;  ///< never reallocated: options_ points into it
    std::vector<JavaVMOption> options_;
};

[[noreturn]] void raiseCannotCall(JvmEnv& env, const wchar_t* method)
{
    env.ExceptionClear();
    throw LauncherException(exit_code::kJavaInvocation, formatMessage(IDS_CANNOT_CALL, method));
}

/// Calls `call`, which asks Java; raises IDS_CANNOT_CALL with `method` when
/// the method is missing or throws.
template <typename Call>
auto askJava(JvmEnv& env, const wchar_t* method, Call call) -> decltype(call())
{
    try {
        auto answer = call();
        if (!env.ExceptionCheck()) return answer;
    } catch (const LauncherException&) {
        // The lookup's own text does not name the question.
    }
    raiseCannotCall(env, method);
}

/// Java 9 and later.
std::int32_t askRuntimeVersion(JvmEnv& env)
{
    static constexpr wchar_t kVersion[] = L"java.lang.Runtime.version()";
    static constexpr wchar_t kFeature[] = L"java.lang.Runtime.Version.feature()";
    const JniObject version = askJava(env, kVersion, [&env] {
        const JniClass runtime(env.get(), "java/lang/Runtime");
        if (runtime.isNull()) raiseCannotCall(env, kVersion);
        return runtime.callStaticObjectMethod("version", "()Ljava/lang/Runtime$Version;");
    });
    if (version.isNull()) raiseCannotCall(env, kVersion);
    return askJava(env, kFeature, [&version] { return version.callIntMethod("feature", "()I"); });
}

void warnAboutVersionParsingError(const std::wstring& version)
{
    logWarn({kClass, L"warnAboutVersionParsingError"},
            L"Cannot parse java.lang.System.getProperty(java.version) result to detect JVM "
            L"version. Assuming the version is sufficient to run the application.",
            L"Version", version);
}

/// Java 8.
std::int32_t askVersionProperty(JvmEnv& env)
{
    static constexpr wchar_t kGetProperty[] = L"java.lang.System.getProperty()";
    const JniObject property = askJava(env, kGetProperty, [&env] {
        const JniClass system(env.get(), "java/lang/System");
        if (system.isNull()) raiseCannotCall(env, kGetProperty);
        const JniObject key = JniObject::newString(env.get(), L"java.version");
        if (key.isNull()) raiseCannotCall(env, kGetProperty);
        return system.callStaticObjectMethod("getProperty",
                                             "(Ljava/lang/String;)Ljava/lang/String;", key.get());
    });
    if (property.isNull()) raiseCannotCall(env, kGetProperty);
    const std::wstring text = env.getText(static_cast<jstring>(property.get()));
    if (const auto version = parseJavaVersion(text)) return *version;
    warnAboutVersionParsingError(text);
    return kUnknownVersion;
}

std::int32_t askJavaVersion(JvmEnv& env)
{
    const JniClass versionClass(env.get(), "java/lang/Runtime$Version");
    if (!versionClass.isNull()) return askRuntimeVersion(env);
    env.ExceptionClear();
    return askVersionProperty(env);
}

/// The process is ended by the JVM.
void announceExit()
{
    flushLog();
    if (JavaVmManager::ExitCallback callback = exitCallback.load(std::memory_order_acquire)) {
        callback();
    }
}

std::int32_t currentProcessId()
{
    return getOsUtilsFactory().getProcessUtils().getCurrentProcessId();
}

/// Runs the body of a hook: nothing may escape into the JVM.
template <typename Body>
void runHook(Body body) noexcept
{
    try {
        body();
    } catch (const LauncherException&) {
        // The process ends all the same, and the log may be what failed.
    } catch (const std::exception&) {
        // Out of memory, say.
    }
}

}  // namespace

void JvmSystemExitHook(jint exitCode)
{
    runHook([exitCode] {
        logWarn({kClass, L"JvmSystemExitHook"}, getMessage(IDS_JAVA_EXIT_ABNORMALLY), L"pid",
                currentProcessId(), L"exitCode", exitCode);
        announceExit();
        releaseLogger();
    });
}

void JvmAbortHook()
{
    runHook([] {
        const CrashWatchdog watchdog;
        limitLogWaits(kCrashLogPatience);
        logWarn({kClass, L"JvmAbortHook"}, getMessage(IDS_JAVA_HALTED), L"pid", currentProcessId());
        announceExit();
        closeLog();
    });
    // Off the watchdog: a disk may be slow, and a start whose options the JVM
    // refuses ends here, too, with a status of its own.
    runHook(releaseLogger);
}

JavaVmManager::JavaVmManager(std::wstring className, std::int32_t minimalJavaVersion)
    : className_(std::move(className)), minimalJavaVersion_(minimalJavaVersion)
{
}

JavaVmManager::~JavaVmManager()
{
    if (!jvm_) return;
    // A JVM that lives on until the process ends keeps its code.
    static_cast<void>(new (std::nothrow) std::shared_ptr<ILibraryHandle>(std::move(library_)));
}

void JavaVmManager::load(const std::vector<std::wstring>& options, const std::wstring& jvmLibPath,
                         int flag)
{
    loadLibrary(jvmLibPath, flag);
    void* createFunction = library_->getSymbol("JNI_CreateJavaVM");
    if (!createFunction) {
        logError({kClass, L"load"}, L"JVM library has no JNI_CreateJavaVM function", L"library",
                 jvmLibPath);
        throw LauncherException(exit_code::kJavaLocation,
                                formatMessage(IDS_LIBJVM_NO_CREATE_FN, jvmLibPath));
    }

    JNIEnv* env = nullptr;
    const jint result = createJvm(options, createFunction, env);
    if (result == JNI_EVERSION) {
        raiseCreationFailure(
            exit_code::kJavaVersion,
            formatMessage(IDS_CANNOT_CREATE_JVM_INSTANCE_VER, minimalJavaVersion_, jvmLibPath),
            jvmLibPath, result);
    }
    if (result != JNI_OK) {
        raiseCreationFailure(exit_code::kJavaLocation,
                             formatMessage(IDS_CANNOT_CREATE_JVM_INSTANCE,
                                           toWString(static_cast<long>(minimalJavaVersion_)),
                                           jvmLibPath, result, jniResultName(result)),
                             jvmLibPath, result);
    }
    logInfo({kClass, L"load"}, L"JVM created", L"result", result);
    stackSize_ = javaStackSize(options);
    checkVersion(env, jvmLibPath);
}

std::future<void> JavaVmManager::start(const std::vector<std::wstring>& arguments,
                                       const std::map<std::wstring, std::wstring>& pathProperties,
                                       const std::map<std::wstring, bool>& booleanProperties,
                                       Completion completion)
{
    JMethodCaller::Variants variants;
    variants.push_back(std::make_unique<TwoArgumentsMethodVariant>(
        L"start", arguments, pathProperties, booleanProperties));
    variants.push_back(std::make_unique<SingleArgumentMethodVariant>(L"start", arguments));
    startCaller_ =
        std::make_shared<JMethodCaller>(jvm_, className_, "launcher-start-thread",
                                        std::move(variants), completion, true, stackSize_);
    return startCaller_->start();
}

std::future<void> JavaVmManager::stop(const std::vector<std::wstring>& arguments,
                                      Completion completion, bool fast)
{
    if (!startCaller_) {
        logWarn({kClass, L"stop"}, L"Attempting to stop java process while it is not started");
        std::promise<void> nothingToDo;
        nothingToDo.set_value();
        return nothingToDo.get_future();
    }
    if (stopCaller_) throw LauncherException(L"Illegal Daemon state: stop() called twice");
    stopCaller_ = newStopCaller(arguments, completion, fast);
    return stopCaller_->start();
}

void JavaVmManager::waitForStartCall() const
{
    if (startCaller_) startCaller_->waitForCall();
}

void JavaVmManager::waitForSafepoint() const
{
    // HotSpot lets no thread into the JVM meanwhile, and each call of the JNI goes there.
    static_cast<void>(JvmEnv::attachToExistingThread(jvm_)->ExceptionCheck());
}

bool JavaVmManager::hasStopMethod(const std::vector<std::wstring>& arguments, bool fast) const
{
    return newStopCaller(arguments, nullptr, fast)->isTargetMethodExists();
}

void JavaVmManager::unload()
{
    if (!jvm_) return;
    if (startCaller_) startCaller_->waitForThread();
    if (stopCaller_) stopCaller_->waitForThread();
    logInfo({kClass, L"unload"}, L"Destroying JVM.");
    flushLog();
    jvm_->DestroyJavaVM();
    jvm_ = nullptr;
    library_->close();
    library_.reset();
    logInfo({kClass, L"unload"}, L"JVM destroyed");
}

void JavaVmManager::setExitCallback(ExitCallback callback)
{
    exitCallback.store(callback, std::memory_order_release);
}

void JavaVmManager::loadLibrary(const std::wstring& jvmLibPath, int flag)
{
    IOsUtilsFactory& factory = getOsUtilsFactory();
    if (factory.getFileUtils().getBinaryType(jvmLibPath) != BinaryType::Elf64) {
        throw LauncherException(exit_code::kConfiguration,
                                formatMessage(IDS_DLL_BAD_ARCH, jvmLibPath));
    }
    library_ = factory.getSystemUtils().loadLibrary(jvmLibPath, flag);
    if (library_->isEmpty()) {
        const std::wstring error = library_->getErrorText();
        logError({kClass, L"load"}, L"Cannot load JVM library", L"os", error, L"jvmLibPath",
                 jvmLibPath);
        throw LauncherException(exit_code::kJavaLocation,
                                formatMessage(IDS_UNABLE_LOAD_LIBJVM, jvmLibPath, error));
    }
    logInfo({kClass, L"load"}, L"JVM library loaded", L"jvmLibPath", jvmLibPath);
}

jint JavaVmManager::createJvm(const std::vector<std::wstring>& options, void* createFunction,
                              JNIEnv*& env)
{
    logOptions(options);
    flushLog();

    JvmOptionArray optionArray(options);
    JavaVMInitArgs arguments{};
    arguments.version = JvmEnv::kJniVersion;
    arguments.nOptions = optionArray.size();
    arguments.options = optionArray.data();
    arguments.ignoreUnrecognized = JNI_TRUE;

    const JvmSuspendSignal suspendSignal;
    void* environment = nullptr;
    const auto create = reinterpret_cast<CreateFunction>(createFunction);
    const jint result = create(&jvm_, &environment, &arguments);
    if (result != JNI_OK) jvm_ = nullptr;
    env = static_cast<JNIEnv*>(environment);
    return result;
}

void JavaVmManager::checkVersion(JNIEnv* env, const std::wstring& jvmLibPath)
{
    std::wstring message;
    std::uint32_t exitCode = exit_code::kJavaVersion;
    try {
        JvmEnv jvmEnv(jvm_, env);
        if (askJavaVersion(jvmEnv) >= minimalJavaVersion_) return;
        message =
            formatMessage(IDS_CANNOT_CREATE_JVM_INSTANCE_VER, minimalJavaVersion_, jvmLibPath);
    } catch (const LauncherException& e) {
        message = formatMessage(IDS_CANNOT_CREATE_JVM_INSTANCE,
                                toWString(static_cast<long>(minimalJavaVersion_)), jvmLibPath,
                                static_cast<int>(JNI_OK), e.message());
        exitCode = e.exitCode();
    }
    unload();
    raiseCreationFailure(exitCode, message, jvmLibPath, JNI_OK);
}

std::shared_ptr<JMethodCaller> JavaVmManager::newStopCaller(
    const std::vector<std::wstring>& arguments, Completion completion, bool fast) const
{
    JMethodCaller::Variants variants;
    variants.push_back(
        std::make_unique<SingleArgumentMethodVariant>(fast ? L"stopFast" : L"stop", arguments));
    return std::make_shared<JMethodCaller>(jvm_, className_, "launcher-stop-thread",
                                           std::move(variants), completion, false, stackSize_);
}
