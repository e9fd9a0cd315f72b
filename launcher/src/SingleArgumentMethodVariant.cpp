#include "SingleArgumentMethodVariant.h"

#include <utility>

#include "JniClass.h"
#include "JvmEnv.h"
#include "Log.h"
#include "TextConversion.h"

SingleArgumentMethodVariant::SingleArgumentMethodVariant(std::wstring methodName,
                                                         std::vector<std::wstring> arguments)
    : MethodVariant(L"SingleArgumentMethodVariant", "([Ljava/lang/String;)V", std::move(methodName),
                    std::move(arguments))
{
}

void SingleArgumentMethodVariant::call(JvmEnv& env, jclass javaClass,
                                       const std::wstring& className) const
{
    const JniClass interfaceClass(env.get(), javaClass, toModifiedUtf8(className));
    const JniObject array = newStringArray(env, arguments(), className);

    logInfo({typeName(), L"call"}, L"Do call JMethod", L"class", className, L"method", methodName(),
            L"args", arguments());
    getLogger().flush();
    announceCall();
    interfaceClass.callStaticVoidMethod(methodName(), signature(), array.get());
    reportOutcome(env, className);
}
