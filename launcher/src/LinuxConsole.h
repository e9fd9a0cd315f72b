// LinuxConsole: the process's standard streams. Redirects them once, in its
// constructor; holds nothing. Made on the main thread before any other is
// started, with descriptors 0 to 2 open.
#pragma once

#include "IConsole.h"

class LinuxConsole final : public IConsole {
public:
    /// Appends standard output to the file `coutPath` and standard error to
    /// `cerrPath`, unless empty; a redirected stream is unbuffered. When that
    /// fails `errorText` receives the message, that of standard error where
    /// both do, and the stream stays where it was, so that the text can be
    /// shown. Never throws.
    LinuxConsole(const std::wstring& coutPath, const std::wstring& cerrPath,
                 std::wstring& errorText);

    void write(const std::wstring& text) override;
    void writeError(const std::wstring& text) override;
    void writeLine(const std::wstring& text) override;
    void writeErrorLine(const std::wstring& text) override;
};
