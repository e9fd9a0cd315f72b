// IgnoredJvmOptions: knows the options that a JVM created through the JNI
// ignores without a word. The `java` command reads them itself or rewrites them
// (the JDK's src/java.base/share/native/libjli/java.c and args.c); the JVM
// skips, with ignoreUnrecognized, whatever it does not know. What it may know,
// in one version or another, is never named here: unknown "-X...", "-XX:..."
// and "--..." options, say. Asked about the options of one JVM in their order;
// not shared between threads.
#pragma once

#include <optional>
#include <string>

class IgnoredJvmOptions final {
public:
    /// What to write instead of `option`, in English, for the log; nothing when
    /// the JVM may read it, or when it is the value of the ignored option before
    /// it.
    [[nodiscard]] std::optional<std::wstring> adviceOn(const std::wstring& option);

private:
    bool valueMayFollow_ = false;  ///< the option before was ignored and takes a word of its own
};
