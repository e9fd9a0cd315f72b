#include "JniClass.h"

#include <cstdarg>
#include <utility>

#include "LauncherException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

JniClass::JniClass(JNIEnv* env, const std::string& name)
    : env_(env), class_(env->FindClass(name.c_str())), name_(name)
{
}

JniClass::JniClass(JNIEnv* env, const std::wstring& name) : JniClass(env, toModifiedUtf8(name)) {}

JniClass::JniClass(JNIEnv* env, jclass givenClass, std::string name)
    : env_(env), class_(nullptr), name_(std::move(name))
{
    if (!givenClass) {
        throw LauncherException(
            L"Illegal Argument: JniClass cannot be constructed with a null givenClass");
    }
    class_ = static_cast<jclass>(env->NewLocalRef(givenClass));
}

JniClass JniClass::ofObject(JNIEnv* env, jobject object)
{
    const JniObject owner(env, env->GetObjectClass(object));
    return {env, static_cast<jclass>(owner.get()), "java/lang/Class"};
}

JniClass::~JniClass()
{
    if (class_) env_->DeleteLocalRef(class_);
}

JniClass::JniClass(JniClass&& other) noexcept
    : env_(other.env_), class_(std::exchange(other.class_, nullptr)), name_(std::move(other.name_))
{
}

JniClass& JniClass::operator=(JniClass&& other) noexcept
{
    JniClass taken(std::move(other));
    std::swap(env_, taken.env_);
    std::swap(class_, taken.class_);
    std::swap(name_, taken.name_);
    return *this;
}

jclass JniClass::newGlobalRef() const
{
    return static_cast<jclass>(env_->NewGlobalRef(class_));
}

JniObject JniClass::callStaticObjectMethod(const char* name, const char* signature, ...) const
{
    jmethodID method = getStaticMethod(name, signature);
    va_list arguments;
    va_start(arguments, signature);
    jobject result = env_->CallStaticObjectMethodV(class_, method, arguments);
    va_end(arguments);
    return {env_, result};
}

void JniClass::callStaticVoidMethod(const char* name, const char* signature, ...) const
{
    jmethodID method = getStaticMethod(name, signature);
    va_list arguments;
    va_start(arguments, signature);
    env_->CallStaticVoidMethodV(class_, method, arguments);
    va_end(arguments);
}

void JniClass::callStaticVoidMethod(const std::wstring& name, const char* signature, ...) const
{
    jmethodID method = getStaticMethod(toModifiedUtf8(name).c_str(), signature);
    va_list arguments;
    va_start(arguments, signature);
    env_->CallStaticVoidMethodV(class_, method, arguments);
    va_end(arguments);
}

JniObject JniClass::newObject(const char* signature, ...) const
{
    jmethodID constructor = getMethod("<init>", signature);
    va_list arguments;
    va_start(arguments, signature);
    jobject result = env_->NewObjectV(class_, constructor, arguments);
    va_end(arguments);
    return {env_, result};
}

JniObject JniClass::getStaticObjectField(const char* name, const char* signature) const
{
    jfieldID field = env_->GetStaticFieldID(class_, name, signature);
    if (!field || env_->ExceptionCheck()) {
        throw LauncherException(exit_code::kJavaInvocation,
                                formatMessage(IDS_CANNOT_FIND_JFIELD, fromModifiedUtf8(name),
                                              fromModifiedUtf8(name_.c_str())));
    }
    return {env_, env_->GetStaticObjectField(class_, field)};
}

bool JniClass::hasStaticMethod(const std::string& name, const char* signature) const
{
    jmethodID method = env_->GetStaticMethodID(class_, name.c_str(), signature);
    env_->ExceptionClear();
    return method != nullptr;
}

jmethodID JniClass::getMethod(const char* name, const char* signature) const
{
    return checked(env_->GetMethodID(class_, name, signature), name);
}

jmethodID JniClass::getStaticMethod(const char* name, const char* signature) const
{
    return checked(env_->GetStaticMethodID(class_, name, signature), name);
}

jmethodID JniClass::checked(jmethodID method, const char* name) const
{
    if (method && !env_->ExceptionCheck()) return method;
    throw LauncherException(exit_code::kJavaInvocation,
                            formatMessage(IDS_CANNOT_FIND_JMETHOD, fromModifiedUtf8(name),
                                          fromModifiedUtf8(name_.c_str())));
}
