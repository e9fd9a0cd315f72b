#include "JavaExceptionText.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "IOsUtilsFactory.h"
#include "JniObject.h"
#include "JvmEnv.h"

namespace {

/// More causes than any honest exception has; getCause() may make up new ones.
constexpr jint kMaximalDepth = 1000;

/// Local references that rendering holds besides one to each throwable.
constexpr jint kWorkingReferences = 16;

/// The result of a method without arguments; nothing when it threw.
std::optional<JniObject> callQuietly(JvmEnv& env, const JniObject& object, const char* name,
                                     const char* signature)
{
    JniObject result = object.callObjectMethod(name, signature);
    if (!env.ExceptionCheck()) return result;
    env.ExceptionClear();
    return std::nullopt;
}

/// Appends the object's toString() behind `prefix`, nothing if that is null.
/// False when it threw.
bool appendToString(JvmEnv& env, const JniObject& object, const std::wstring& prefix,
                    std::wstring& text)
{
    const auto string = callQuietly(env, object, "toString", "()Ljava/lang/String;");
    if (!string) return false;
    if (!string->isNull()) text += prefix + env.getText(static_cast<jstring>(string->get()));
    return true;
}

/// One throwable with its frames. False when the rendering ends there.
bool appendThrowable(JvmEnv& env, const JniObject& throwable, std::wstring& text)
{
    const std::wstring& lineEnd = getOsUtilsFactory().getLineEnd();
    const auto stack =
        callQuietly(env, throwable, "getStackTrace", "()[Ljava/lang/StackTraceElement;");
    if (!stack || stack->isNull()) return false;

    const std::wstring prefix = text.empty() ? L"" : lineEnd + L"Caused by: ";
    if (!appendToString(env, throwable, prefix, text)) return false;

    auto* const frames = static_cast<jobjectArray>(stack->get());
    const jsize count = env.GetArrayLength(frames);
    for (jsize i = 0; i < count; ++i) {
        const JniObject frame(env.get(), env.GetObjectArrayElement(frames, i));
        if (frame.isNull()) continue;
        if (!appendToString(env, frame, lineEnd + L"    ", text)) return false;
    }
    return true;
}

}  // namespace

std::wstring renderJavaException(JvmEnv& env, const JniObject& throwable)
{
    env.ExceptionClear();
    if (env.get()->EnsureLocalCapacity(kMaximalDepth + kWorkingReferences) != JNI_OK) {
        env.ExceptionClear();  // a hint only
    }
    std::wstring text;
    std::vector<JniObject> seen;
    seen.emplace_back(env.get(), env.NewLocalRef(throwable.get()));
    while (seen.size() <= std::size_t{kMaximalDepth} && appendThrowable(env, seen.back(), text)) {
        auto cause = callQuietly(env, seen.back(), "getCause", "()Ljava/lang/Throwable;");
        if (!cause || cause->isNull()) break;
        const bool circular = std::any_of(seen.begin(), seen.end(), [&](const JniObject& before) {
            return env.get()->IsSameObject(before.get(), cause->get()) == JNI_TRUE;
        });
        if (circular) break;
        seen.push_back(std::move(*cause));
    }
    return text;
}
