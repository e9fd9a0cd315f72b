// MethodVariant: what the variants share: the method's name, its string
// arguments, and how the outcome of a call is logged and reported.
#pragma once

#include <jni.h>

#include <functional>
#include <string>
#include <vector>

#include "IMethodVariant.h"
#include "JniObject.h"

class MethodVariant : public IMethodVariant {
public:
    [[nodiscard]] bool isApplicable(JvmEnv& env, jclass javaClass,
                                    const std::wstring& className) const final;
    [[nodiscard]] std::wstring toString() const final;
    [[nodiscard]] std::wstring methodName() const final { return methodName_; }
    void announceCalls(std::function<void()> announcement) final;

protected:
    /// `typeName` is also the class name of the records; both texts are literals.
    MethodVariant(const wchar_t* typeName, const char* signature, std::wstring methodName,
                  std::vector<std::wstring> arguments);

    [[nodiscard]] const wchar_t* typeName() const { return typeName_; }
    [[nodiscard]] const char* signature() const { return signature_; }
    [[nodiscard]] const std::vector<std::wstring>& arguments() const { return arguments_; }

    /// A Java string; raises as raiseIfThrown().
    [[nodiscard]] JniObject newString(JvmEnv& env, const std::wstring& text,
                                      const std::wstring& className) const;
    /// A Java array of `texts`; raises as raiseIfThrown().
    [[nodiscard]] JniObject newStringArray(JvmEnv& env, const std::vector<std::wstring>& texts,
                                           const std::wstring& className) const;
    /// Throws LauncherJavaMethodInvocationException, after an ERROR record, if
    /// a Java exception is pending; clears it.
    void raiseIfThrown(JvmEnv& env, const std::wstring& className) const;
    void announceCall() const { announcement_(); }
    /// raiseIfThrown(), else records the success. Flushes the log either way.
    void reportOutcome(JvmEnv& env, const std::wstring& className) const;

private:
    const wchar_t* typeName_;
    const char* signature_;
    std::wstring methodName_;
    std::vector<std::wstring> arguments_;
    std::function<void()> announcement_ = [] {};
};
