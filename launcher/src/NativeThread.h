// NativeThread: starts threads with a stack of a chosen size.
#pragma once

#include <cstddef>
#include <functional>

/// Runs `body`, which must not throw, on a new detached thread. Its stack has
/// `stackSize` bytes, or the platform's default when that is more. Throws
/// LauncherOsException (code 20) when the thread cannot be started; `body` is
/// destroyed unused then.
void startDetachedThread(std::function<void()> body, std::size_t stackSize);
