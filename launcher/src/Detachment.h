// Detachment: puts the process into the background by daemon(3), and keeps
// whoever has run the launcher waiting until others can find it there. On the
// main thread, before there is any other.
#pragma once

#include "FileDescriptor.h"

class Detachment final {
public:
    /// Goes on in another process without a terminal, in the same directory and
    /// with the same streams. The process that was started stays until release()
    /// or the end of the new one, and ends with 0. False with errno when there
    /// can be no other process.
    [[nodiscard]] bool detach();

    /// Ends the process that was started. Does nothing in the foreground, and the
    /// second time.
    void release() { release_ = FileDescriptor(); }

private:
    FileDescriptor release_;  ///< of a pipe; what counts is its end
};
