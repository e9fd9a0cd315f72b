// JniEntity: sole owner of one JNI local reference. Valid on its thread and
// inside the current native frame only.
#pragma once

#include <jni.h>

class JniEntity {
public:
    /// Takes over `ref`, a local reference or null.
    JniEntity(JNIEnv* env, jobject ref) : env_(env), ref_(ref) {}
    virtual ~JniEntity();
    JniEntity(JniEntity&& other) noexcept;
    JniEntity(const JniEntity&) = delete;
    JniEntity& operator=(const JniEntity&) = delete;

    [[nodiscard]] virtual bool isNull() const { return ref_ == nullptr; }
    /// The reference itself, on loan.
    [[nodiscard]] virtual jobject get() const { return ref_; }
    /// A new global reference to the same object, owned by the caller.
    [[nodiscard]] virtual jobject newGlobalRef() const { return env_->NewGlobalRef(ref_); }

protected:
    [[nodiscard]] JNIEnv* env() const { return env_; }

private:
    JNIEnv* env_;
    jobject ref_;
};
