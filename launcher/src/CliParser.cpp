#include "CliParser.h"

#include <span>

#include "IOsUtilsFactory.h"
#include "LauncherException.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"

namespace {

using Words = std::span<const std::wstring>;

/// Reads the option at the front of `words`; gives the number of words used.
std::size_t readOption(const CliOption& option, Words words, CliParseResult& result)
{
    const bool isInline = option.match(words[0]) == CliOption::Match::InlineValue;
    if (!isInline && words.size() == 1) {
        result.addError(formatMessage(IDS_OPTION_WITHOUT_VALUE, option.name()));
        return 1;
    }
    if (!option.isRepeatable() && result.hasOption(option.name())) {
        result.addError(formatMessage(IDS_OPTION_DUPLICATION_PROHIBITED, option.name()));
    }
    if (isInline) {
        result.addOptionValue(option.name(), option.inlineValue(words[0]));
        return 1;
    }
    // Taken as it stands, even when it looks like another option; required.
    result.addOptionValue(option.name(), words[1]);
    return 2;
}

/// Reads what stands at the front of `words`; gives the number of words used.
std::size_t readParameter(const CliMode& mode, Words words, CliParseResult& result)
{
    if (const ICliSwitch* cliSwitch = mode.findSwitch(words[0])) {
        if (!result.addSwitch(cliSwitch->name())) {
            result.addError(formatMessage(IDS_OPTION_DUPLICATION_PROHIBITED, cliSwitch->name()));
        }
        return 1;
    }
    if (const CliOption* option = mode.findOption(words[0])) {
        return readOption(*option, words, result);
    }
    result.addError(formatMessage(IDS_UNEXPECTED_CLI_ARGS, words[0]));
    return 1;
}

CliParseResult parseWords(const CliMode& mode, Words words)
{
    CliParseResult result(mode.name());
    while (!words.empty()) words = words.subspan(readParameter(mode, words, result));
    return result;
}

/// The usage while it is written: headings, and entries below them.
class UsageText {
public:
    void addHeading(const std::wstring& heading) { text_ += heading + lineEnd_ + lineEnd_; }
    void addEntry(const std::wstring& name, const std::wstring& description)
    {
        text_ += L"    " + name + lineEnd_;
        text_ += L"        " + description + lineEnd_ + lineEnd_;
    }
    /// The switches, then the options, that are common or that are not.
    void addParameters(const CliMode& mode, bool common)
    {
        for (const auto& [name, cliSwitch] : mode.switches()) {
            if (cliSwitch->isCommon() == common) addEntry(name, cliSwitch->description());
        }
        for (const auto& [name, option] : mode.options()) {
            if (option.isCommon() == common) addEntry(option.synopsis(), option.description());
        }
    }
    [[nodiscard]] std::wstring finish() { return text_ + lineEnd_; }

private:
    const std::wstring& lineEnd_ = getOsUtilsFactory().getLineEnd();
    std::wstring text_;
};

}  // namespace

CliMode& CliParser::addMode(const std::wstring& name, const std::wstring& usage,
                            const std::wstring& description)
{
    checkNameIsFree(name);
    return *modes_.emplace_back(std::make_unique<CliMode>(false, name, usage, description));
}

CliMode& CliParser::setDefaultMode(const std::wstring& name, const std::wstring& usage,
                                   const std::wstring& description)
{
    if (defaultMode_) throw LauncherException(L"The default mode was already set");
    checkNameIsFree(name);
    defaultMode_ = std::make_unique<CliMode>(true, name, usage, description);
    return *defaultMode_;
}

CliParseResult CliParser::parse(const std::vector<std::wstring>& arguments) const
{
    if (arguments.size() < 2) return parseWords(defaultMode(), {});
    const std::wstring& word = arguments[1];
    const CliMode* mode = findMode(word);
    if (!mode) {
        CliParseResult result(defaultMode().name());
        result.addError(formatMessage(IDS_UNSUPPORTED_MODE, word));
        return result;
    }
    // A word that is no mode's name selects the default mode as its switch.
    return parseWords(*mode, Words(arguments).subspan(mode->name() == word ? 2 : 1));
}

const CliMode* CliParser::findMode(std::wstring_view name) const
{
    for (const auto& mode : modes_) {
        if (mode->name() == name) return mode.get();
    }
    const bool isDefault =
        defaultMode_ && (defaultMode_->name() == name || defaultMode_->findSwitch(name));
    return isDefault ? defaultMode_.get() : nullptr;
}

const CliMode& CliParser::getMode(const std::wstring& name) const
{
    if (const CliMode* mode = findMode(name)) return *mode;
    throw LauncherException(exit_code::kCommandLine, formatMessage(IDS_UNSUPPORTED_MODE, name));
}

std::wstring CliParser::renderUsage(const CliMode& mode, const CliParseResult& result,
                                    const std::wstring& programName) const
{
    const CliMode& shown = modeToShow(mode, result);
    UsageText usage;
    usage.addHeading(getMessage(IDS_CLI_USAGE_USAGE));
    usage.addHeading(L"        " + programName + L" " + shown.usage());
    usage.addHeading(getMessage(IDS_CLI_USAGE_COMMON_PARAMS));
    usage.addParameters(shown, true);
    usage.addHeading(getMessage(IDS_CLI_USAGE_MODE));
    usage.addEntry(shown.name(), shown.description());
    usage.addHeading(getMessage(IDS_CLI_USAGE_PARAMS));
    usage.addParameters(shown, false);
    return usage.finish();
}

void CliParser::checkNameIsFree(const std::wstring& name) const
{
    for (const auto& mode : modes_) {
        if (mode->name() == name) {
            throw LauncherException(exit_code::kCommandLine, L"Mode name already defined");
        }
    }
}

const CliMode& CliParser::defaultMode() const
{
    if (!defaultMode_) throw LauncherException(L"The default mode was not set");
    return *defaultMode_;
}

const CliMode& CliParser::modeToShow(const CliMode& mode, const CliParseResult& result) const
{
    const std::wstring* name = mode.isDefault() ? result.firstSwitch() : nullptr;
    const CliMode* named = name ? findMode(*name) : nullptr;
    return named ? *named : mode;
}
