#include "LinuxConsole.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "FileDescriptor.h"
#include "IOsUtilsFactory.h"
#include "LastErrorText.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"
#include "TrustedPath.h"

namespace {

constexpr wchar_t kCout[] = L"--cout";
constexpr wchar_t kCerr[] = L"--cerr";

/// Appends `stream` to the file from now on; false, with errno, on failure.
/// Unlike freopen(3), which closes the stream first, it then leaves it as it was.
bool redirect(FILE* stream, const std::wstring& path)
{
    fflush(stream);  // what was written before belongs to the old place
    const FileDescriptor file =
        TrustedPath(toUtf8(path)).open(O_WRONLY | O_APPEND | O_CREAT, kOutputFileMode);
    return file.isOpen() && dup2(file.get(), fileno(stream)) >= 0;
}

/// In one call: an unbuffered stream then makes one write of it, which other
/// writers of the same file cannot split.
void putLine(const std::wstring& text, FILE* stream)
{
    const std::string line = toUtf8(text) + toUtf8(getOsUtilsFactory().getLineEnd());
    fputs(line.c_str(), stream);
}

void makeUnbuffered(FILE* stream)
{
    setvbuf(stream, nullptr, _IONBF, 0);
}

void redirectBoth(const std::wstring& path, std::wstring& errorText)
{
    const auto recordError = [&] {
        const std::wstring error = lastErrorText();
        errorText = formatMessage(IDS_2DESTINATIONS_NOT_ACCESSIBLE, kCout, kCerr, path, error);
    };
    if (!redirect(stdout, path)) recordError();
    fflush(stderr);
    if (dup2(STDOUT_FILENO, STDERR_FILENO) < 0) recordError();
    makeUnbuffered(stdout);
    makeUnbuffered(stderr);
}

}  // namespace

LinuxConsole::LinuxConsole(const std::wstring& coutPath, const std::wstring& cerrPath,
                           std::wstring& errorText)
{
    if (!coutPath.empty() && coutPath == cerrPath) {
        redirectBoth(coutPath, errorText);
        return;
    }
    if (!coutPath.empty()) {
        // This message has no room for the reason; the one below has.
        if (!redirect(stdout, coutPath)) {
            errorText = formatMessage(IDS_DESTINATION_IS_NOT_ACCESSIBLE, kCout, coutPath);
        }
        makeUnbuffered(stdout);
    }
    if (!cerrPath.empty()) {
        if (!redirect(stderr, cerrPath)) {
            const std::wstring error = lastErrorText();
            errorText = formatMessage(IDS_DESTINATION_IS_NOT_ACCESSIBLE_EX, kCerr, cerrPath, error);
        }
        makeUnbuffered(stderr);
    }
}

void LinuxConsole::write(const std::wstring& text)
{
    fputs(toUtf8(text).c_str(), stdout);
}

void LinuxConsole::writeError(const std::wstring& text)
{
    fputs(toUtf8(text).c_str(), stderr);
}

void LinuxConsole::writeLine(const std::wstring& text)
{
    putLine(text, stdout);
}

void LinuxConsole::writeErrorLine(const std::wstring& text)
{
    putLine(text, stderr);
}
