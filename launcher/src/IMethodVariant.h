// IMethodVariant: one signature that a method of the Java interface class may
// have, and how to call it. Used on the thread that `env` belongs to.
#pragma once

#include <jni.h>

#include <functional>
#include <string>

class JvmEnv;

class IMethodVariant {
public:
    /// True when `javaClass` declares the static method with this signature.
    [[nodiscard]] virtual bool isApplicable(JvmEnv& env, jclass javaClass,
                                            const std::wstring& className) const = 0;
    /// Calls the method; returns when it does. Throws
    /// LauncherJavaMethodInvocationException (code 5) with the rendered Java
    /// exception when it throws, or when its arguments cannot be made, and
    /// LauncherException IDS_CANNOT_FIND_JMETHOD (code 5) when it is not there.
    virtual void call(JvmEnv& env, jclass javaClass, const std::wstring& className) const = 0;
    /// For the log: the variant's type and its method name.
    [[nodiscard]] virtual std::wstring toString() const = 0;
    [[nodiscard]] virtual std::wstring methodName() const = 0;
    virtual ~IMethodVariant() = default;
    /// From now on call() runs `announcement` right before the method itself.
    virtual void announceCalls(std::function<void()> announcement) = 0;
};
