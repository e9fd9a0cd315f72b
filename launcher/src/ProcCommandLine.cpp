#include "ProcCommandLine.h"

#include "FileHandle.h"
#include "LastErrorText.h"
#include "LauncherOsException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

namespace {

[[noreturn]] void raiseCannotRead()
{
    const std::wstring error = lastErrorText();
    throw LauncherOsException(formatMessage(IDS_CANNOT_GET_COMMAND_LINE_ARGS, error));
}

}  // namespace

std::vector<std::wstring> readCommandLine(const std::wstring& path)
{
    const FileHandle file = openFile(toUtf8(path), "rb");
    if (!file) raiseCannotRead();
    std::vector<std::wstring> arguments;
    std::string argument;
    for (int byte = fgetc(file.get()); byte != EOF; byte = fgetc(file.get())) {
        if (byte != 0) {
            argument += static_cast<char>(byte);
            continue;
        }
        arguments.push_back(toWide(argument));
        argument.clear();
    }
    if (ferror(file.get())) raiseCannotRead();
    if (!argument.empty()) arguments.push_back(toWide(argument));
    return arguments;
}
