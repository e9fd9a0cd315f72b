// CliParseResult: what a command line holds, and all that is wrong with it.
// Filled by the parser, a plain value afterwards.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

class CliParseResult final {
public:
    explicit CliParseResult(std::wstring modeName);

    [[nodiscard]] const std::wstring& getModeName() const { return modeName_; }
    [[nodiscard]] bool hasSwitch(const std::wstring& displayName) const;
    /// The switch that was given and whose name comes first; null without any.
    [[nodiscard]] const std::wstring* firstSwitch() const;
    [[nodiscard]] bool hasOption(const std::wstring& name) const;
    /// The first value of the option, or `defaultText` when it was not given.
    [[nodiscard]] std::wstring getOptionValue(const std::wstring& name,
                                              const std::wstring& defaultText) const;
    /// All values in their order; none when the option was not given.
    [[nodiscard]] std::vector<std::wstring> getOptionValues(const std::wstring& name) const;
    [[nodiscard]] bool hasErrors() const { return !errors_.empty(); }
    /// The texts of all errors in their order, on a line each.
    [[nodiscard]] const std::wstring& getErrors() const { return errors_; }

    /// False when the switch was recorded already.
    bool addSwitch(const std::wstring& displayName);
    void addOptionValue(const std::wstring& name, std::wstring_view value);
    void addError(const std::wstring& text);

private:
    std::wstring modeName_;
    std::map<std::wstring, bool> switches_;
    std::map<std::wstring, std::vector<std::wstring>> options_;
    std::wstring errors_;
};
