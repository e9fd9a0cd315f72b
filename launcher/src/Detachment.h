// Detachment: puts the process into the background by daemon(3), and keeps
// whoever has run the launcher waiting until others can find it there. On the
// main thread, before there is any other.
#pragma once

class Detachment final {
public:
    /// Goes on in another process without a terminal, in the same directory and
    /// with the same streams. The process that was started stays until release(),
    /// and ends with 0; without release() it stays until the new one has ended, and
    /// so has told why. False with errno when there can be no other process.
    [[nodiscard]] bool detach();

    /// Ends the process that was started. Does nothing in the foreground, and the
    /// second time.
    void release();

private:
    int release_ = -1;  ///< of a pipe; its end tells. Outlives the object on purpose
};
