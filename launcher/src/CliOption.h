// CliOption: a named value of the command line, "--name=value" in one word or
// "--name value" in two.
#pragma once

#include <string>
#include <string_view>

class CliOption final {
public:
    /// How a word names an option.
    enum class Match { None, SeparateValue, InlineValue };

    CliOption(std::wstring name, std::wstring description, std::wstring valuePlaceholder,
              bool common, bool repeatable);

    [[nodiscard]] const std::wstring& name() const { return name_; }
    [[nodiscard]] const std::wstring& description() const { return description_; }
    /// True when the usage lists it among the common parameters.
    [[nodiscard]] bool isCommon() const { return common_; }
    /// True when it may be given several times; all values are kept.
    [[nodiscard]] bool isRepeatable() const { return repeatable_; }
    /// How the usage shows it: "--name=/path", or "--name" without placeholder.
    [[nodiscard]] std::wstring synopsis() const;

    [[nodiscard]] Match match(std::wstring_view argument) const;
    /// The text behind the "=" of an argument that match() calls InlineValue.
    [[nodiscard]] std::wstring_view inlineValue(std::wstring_view argument) const;

private:
    std::wstring name_;
    std::wstring description_;
    std::wstring valuePlaceholder_;
    bool common_;
    bool repeatable_;
};
