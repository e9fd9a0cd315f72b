#include "MethodVariant.h"

#include <utility>

#include "IOsUtilsFactory.h"
#include "JavaExceptionText.h"
#include "JniClass.h"
#include "JvmEnv.h"
#include "LauncherJavaMethodInvocationException.h"
#include "Log.h"
#include "TextConversion.h"

MethodVariant::MethodVariant(const wchar_t* typeName, const char* signature,
                             std::wstring methodName, std::vector<std::wstring> arguments)
    : typeName_(typeName),
      signature_(signature),
      methodName_(std::move(methodName)),
      arguments_(std::move(arguments))
{
}

bool MethodVariant::isApplicable(JvmEnv& env, jclass javaClass, const std::wstring& className) const
{
    const JniClass interfaceClass(env.get(), javaClass, toModifiedUtf8(className));
    return interfaceClass.hasStaticMethod(toModifiedUtf8(methodName_), signature_);
}

std::wstring MethodVariant::toString() const
{
    return typeName_ + (L"(" + methodName_ + L")");
}

void MethodVariant::announceCalls(std::function<void()> announcement)
{
    announcement_ = std::move(announcement);
}

JniObject MethodVariant::newString(JvmEnv& env, const std::wstring& text,
                                   const std::wstring& className) const
{
    JniObject string = JniObject::newString(env.get(), text);
    raiseIfThrown(env, className);
    return string;
}

JniObject MethodVariant::newStringArray(JvmEnv& env, const std::vector<std::wstring>& texts,
                                        const std::wstring& className) const
{
    const JniClass stringClass(env.get(), "java/lang/String");
    raiseIfThrown(env, className);
    JniObject array(env.get(),
                    env.NewObjectArray(static_cast<jsize>(texts.size()), stringClass.get()));
    raiseIfThrown(env, className);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const JniObject string = newString(env, texts[i], className);
        env.SetObjectArrayElement(static_cast<jobjectArray>(array.get()), static_cast<jsize>(i),
                                  string.get());
    }
    return array;
}

void MethodVariant::raiseIfThrown(JvmEnv& env, const std::wstring& className) const
{
    if (!env.ExceptionCheck()) return;
    const JniObject throwable(env.get(), env.ExceptionOccurred());
    const std::wstring text = renderJavaException(env, throwable);
    logError({typeName_, L"call"}, L"JMethod thrown", L"callingClassName", className,
             L"callingMethodName", methodName_, L"javaExceptionMessage",
             getOsUtilsFactory().getLineEnd() + text);
    getLogger().flush();
    throw LauncherJavaMethodInvocationException(L"Java exception while invoking " + className +
                                                L"." + methodName_ + L": " + text);
}

void MethodVariant::reportOutcome(JvmEnv& env, const std::wstring& className) const
{
    raiseIfThrown(env, className);
    logInfo({typeName_, L"call"}, L"JMethod called successfully", L"class", className, L"jmethod",
            methodName_);
    getLogger().flush();
}
