// JniObject: sole owner of a local reference to a Java object, and calls of
// its methods. A call throws LauncherException IDS_CANNOT_FIND_JMETHOD (code
// 5) when the object's class has no such method; whether the Java code threw
// is for the caller to check.
#pragma once

#include <jni.h>

#include <string>

#include "JniEntity.h"

class JniObject final : public JniEntity {
public:
    using JniEntity::JniEntity;

    /// A Java string of `text`; null with a Java exception pending when the
    /// JVM is out of memory.
    [[nodiscard]] static JniObject newString(JNIEnv* env, const std::wstring& text);

    // The variable arguments are JNI values as the signature names them.
    [[nodiscard]] JniObject callObjectMethod(const char* name, const char* signature, ...) const;
    void callVoidMethod(const char* name, const char* signature, ...) const;
    [[nodiscard]] jint callIntMethod(const char* name, const char* signature, ...) const;

private:
    [[nodiscard]] jmethodID findMethod(const char* name, const char* signature) const;
};
