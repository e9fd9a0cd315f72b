// StackEnd: where a walk over the stack by frame pointers ends. The JVM takes such
// walks (native memory tracking, from before its signal handlers exist), and the C
// library's code that calls main() and a thread's function has no frame pointers:
// a walk that goes on there reads memory at random. It may still get lost where such
// code stands between, as in our threads: by then the JVM has its handlers.
#pragma once

/// Calls `body` with `argument`; its caller's frame pointer reads as zero, which marks
/// the outermost frame, see "Initial Stack and Register State" in the System V ABI
/// for x86-64. Needs code that keeps frame pointers. `body` must not throw.
extern "C" void callAtStackEnd(void (*body)(void*), void* argument);
