// JniClass: sole owner of a local reference to a Java class, and calls of its
// static methods. A failed lookup of a method or field throws
// LauncherException IDS_CANNOT_FIND_JMETHOD or IDS_CANNOT_FIND_JFIELD (code
// 5); whether the Java code that was called threw is for the caller to check.
// Java exceptions stay pending except in hasStaticMethod().
#pragma once

#include <jni.h>

#include <string>

#include "JniObject.h"

class JniClass final {
public:
    /// Looks the class up, "java/lang/String". When it cannot be loaded,
    /// isNull() is true and the Java exception pending.
    JniClass(JNIEnv* env, const std::string& name);
    JniClass(JNIEnv* env, const std::wstring& name);
    /// A new reference to a class that the caller holds. Throws
    /// LauncherException (code 21) for a null `givenClass`.
    JniClass(JNIEnv* env, jclass givenClass, std::string name);
    /// The class of an object, under the name "java/lang/Class".
    [[nodiscard]] static JniClass ofObject(JNIEnv* env, jobject object);
    ~JniClass();
    // Both leave `other` null.
    JniClass(JniClass&& other) noexcept;
    JniClass& operator=(JniClass&& other) noexcept;
    JniClass(const JniClass&) = delete;
    JniClass& operator=(const JniClass&) = delete;

    [[nodiscard]] bool isNull() const { return class_ == nullptr; }
    [[nodiscard]] jclass get() const { return class_; }
    /// A new global reference to the class, owned by the caller.
    [[nodiscard]] jclass newGlobalRef() const;

    // The variable arguments are JNI values as the signature names them.
    [[nodiscard]] JniObject callStaticObjectMethod(const char* name, const char* signature,
                                                   ...) const;
    void callStaticVoidMethod(const char* name, const char* signature, ...) const;
    void callStaticVoidMethod(const std::wstring& name, const char* signature, ...) const;
    /// Calls the constructor of that signature.
    [[nodiscard]] JniObject newObject(const char* signature, ...) const;
    [[nodiscard]] JniObject getStaticObjectField(const char* name, const char* signature) const;
    /// Never throws, and leaves no Java exception of its own pending.
    [[nodiscard]] bool hasStaticMethod(const std::string& name, const char* signature) const;
    /// The ID of an instance method.
    [[nodiscard]] jmethodID getMethod(const char* name, const char* signature) const;

private:
    [[nodiscard]] jmethodID getStaticMethod(const char* name, const char* signature) const;
    /// Throws IDS_CANNOT_FIND_JMETHOD unless `method` was found.
    [[nodiscard]] jmethodID checked(jmethodID method, const char* name) const;

    JNIEnv* env_;
    jclass class_;
    std::string name_;  ///< modified UTF-8, with slashes
};
