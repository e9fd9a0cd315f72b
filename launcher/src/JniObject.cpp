#include "JniObject.h"

#include <cstdarg>

#include "JniClass.h"
#include "TextConversion.h"

JniObject JniObject::newString(JNIEnv* env, const std::wstring& text)
{
    return {env, env->NewStringUTF(toModifiedUtf8(text).c_str())};
}

JniObject JniObject::callObjectMethod(const char* name, const char* signature, ...) const
{
    jmethodID method = findMethod(name, signature);
    va_list arguments;
    va_start(arguments, signature);
    jobject result = env()->CallObjectMethodV(get(), method, arguments);
    va_end(arguments);
    return {env(), result};
}

void JniObject::callVoidMethod(const char* name, const char* signature, ...) const
{
    jmethodID method = findMethod(name, signature);
    va_list arguments;
    va_start(arguments, signature);
    env()->CallVoidMethodV(get(), method, arguments);
    va_end(arguments);
}

jint JniObject::callIntMethod(const char* name, const char* signature, ...) const
{
    jmethodID method = findMethod(name, signature);
    va_list arguments;
    va_start(arguments, signature);
    const jint result = env()->CallIntMethodV(get(), method, arguments);
    va_end(arguments);
    return result;
}

jmethodID JniObject::findMethod(const char* name, const char* signature) const
{
    return JniClass::ofObject(env(), get()).getMethod(name, signature);
}
