#include "VariableExpansion.h"

#include <algorithm>
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

/// How many characters at the end of `value` are the front of `variable`.
std::size_t begunAtEnd(std::wstring_view value, std::wstring_view variable)
{
    std::size_t size = std::min(value.size(), variable.size() - 1);
    while (!value.ends_with(variable.substr(0, size))) --size;
    return size;
}

/// `text` with `value` for every `variable`, also for one that the end of a
/// value forms with the text behind it. `value` does not hold `variable`, so
/// each replacement takes something of the text and the loops end.
std::wstring replaceAll(std::wstring_view text, std::wstring_view variable, std::wstring_view value)
{
    const std::size_t begun = begunAtEnd(value, variable);
    std::wstring done;
    done.reserve(text.size() + value.size());  // one is the most common
    for (;;) {
        const std::size_t position = text.find(variable);
        done += text.substr(0, position);
        if (position == std::wstring_view::npos) return done;
        text.remove_prefix(position + variable.size());
        done += value;
        while (begun > 0 && text.starts_with(variable.substr(begun))) {
            text.remove_prefix(variable.size() - begun);
            done.resize(done.size() - begun);
            done += value;
        }
    }
}

}  // namespace

std::wstring ownProcessId()
{
    const long pid = getOsUtilsFactory().getProcessUtils().getCurrentProcessId();
    return toWString(pid);
}

std::wstring expandVariables(const ExpansionContext& context, std::wstring text)
{
    if (!holds(text, L"${")) return text;
    if (context.instanceRoot.empty() && holds(text, kInstanceRoot)) {
        throw LauncherException(
            exit_code::kConfiguration,
            formatMessage(IDS_INSTANCE_IN_FILE_BUT_NOT_IN_CLI, context.fileName, text));
    }
    const std::pair<const wchar_t*, std::wstring_view> variables[] = {
        {kInstanceRoot, context.instanceRoot},           {L"${env.path}", context.path},
        {L"${launcher.dir}", context.launcherDirectory}, {L"${launcher.pid}", context.processId},
        {L"${launcher.version}", kLauncherVersion},      {L"${launcher.arch}", L"x86-64"},
    };
    for (const auto& [variable, value] : variables) {
        if (!holds(text, variable)) continue;
        if (holds(value, variable)) {
            throw LauncherException(exit_code::kConfiguration,
                                    formatMessage(IDS_FILE_VARIABLE_HOLDS_ITSELF, context.fileName,
                                                  variable, std::wstring(value)));
        }
        text = replaceAll(text, variable, value);
    }
    return text;
}
