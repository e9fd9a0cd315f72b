// JavaStackSize: the stack size that JVM options ask for.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Bytes that the last "-Xss" (a size, "64m") or "-XX:ThreadStackSize="
/// (KiB) among the options asks for; 0 when none does. HotSpot applies these
/// to the threads that it makes itself only, not to a native thread that
/// attaches: that one has to be started with such a stack.
[[nodiscard]] std::size_t javaStackSize(const std::vector<std::wstring>& jvmOptions);
