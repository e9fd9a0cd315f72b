// IConsole: what a user reads, on the process's standard streams. Writing
// never fails visibly and flushes nothing by itself.
#pragma once

#include <string>

class IConsole {
public:
    virtual void write(const std::wstring& text) = 0;
    virtual void writeError(const std::wstring& text) = 0;
    /// The text and a line end.
    virtual void writeLine(const std::wstring& text) = 0;
    virtual void writeErrorLine(const std::wstring& text) = 0;
    virtual ~IConsole() = default;
};
