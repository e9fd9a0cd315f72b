// JavaExceptionText: a Java exception as text, with its stack and causes.
#pragma once

#include <string>

class JniObject;
class JvmEnv;

/// Renders `throwable`: its toString(), each stack frame on a line indented by
/// four blanks, then "Caused by: " and the same for every cause. Clears the
/// pending Java exception first, and ends early, without one pending, when
/// Java code fails on the way or the causes run in a circle.
[[nodiscard]] std::wstring renderJavaException(JvmEnv& env, const JniObject& throwable);
