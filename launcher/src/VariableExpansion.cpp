#include "VariableExpansion.h"

#include <string_view>
#include <utility>

#include "IOsUtilsFactory.h"
#include "IProcessUtils.h"
#include "LauncherException.h"
#include "LauncherVersion.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

namespace {

constexpr wchar_t kInstanceRoot[] = L"${instance.root}";

bool holds(std::wstring_view text, std::wstring_view part)
{
    return text.find(part) != std::wstring_view::npos;
}

std::wstring reversed(std::wstring_view text)
{
    return {text.rbegin(), text.rend()};
}

/// `text` with `value` for every `variable`, also for one that the end of a
/// value forms with the text behind it. `value` does not hold `variable`, so
/// each replacement takes something of the text and the loop ends.
std::wstring replaceAll(const std::wstring& text, std::wstring_view variable,
                        std::wstring_view value)
{
    const std::wstring variableBackwards = reversed(variable);
    const std::wstring valueBackwards = reversed(value);
    std::wstring done;
    std::wstring ahead = reversed(text);  // backwards, so that its front is cheap to replace
    while (!ahead.empty()) {
        if (ahead.ends_with(variableBackwards)) {
            ahead.resize(ahead.size() - variable.size());
            ahead += valueBackwards;
        } else {
            done += ahead.back();
            ahead.pop_back();
        }
    }
    return done;
}

}  // namespace

std::wstring expandVariables(const ExpansionContext& context, const std::wstring& text)
{
    if (!holds(text, L"${")) return text;
    if (context.instanceRoot.empty() && holds(text, kInstanceRoot)) {
        throw LauncherException(
            exit_code::kConfiguration,
            formatMessage(IDS_INSTANCE_IN_FILE_BUT_NOT_IN_CLI, context.fileName, text));
    }
    const long pid = getOsUtilsFactory().getProcessUtils().getCurrentProcessId();
    const std::pair<const wchar_t*, std::wstring> variables[] = {
        {kInstanceRoot, context.instanceRoot},           {L"${env.path}", context.path},
        {L"${launcher.dir}", context.launcherDirectory}, {L"${launcher.pid}", toWString(pid)},
        {L"${launcher.version}", kLauncherVersion},      {L"${launcher.arch}", L"x86-64"},
    };
    std::wstring expanded = text;
    for (const auto& [variable, value] : variables) {
        if (!holds(expanded, variable)) continue;
        if (holds(value, variable)) {
            throw LauncherException(
                exit_code::kConfiguration,
                formatMessage(IDS_FILE_VARIABLE_HOLDS_ITSELF, context.fileName, variable, value));
        }
        expanded = replaceAll(expanded, variable, value);
    }
    return expanded;
}
