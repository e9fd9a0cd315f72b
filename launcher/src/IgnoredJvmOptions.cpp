#include "IgnoredJvmOptions.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

constexpr wchar_t kUseClassPath[] = L"--jclasspath, or class-path in launcher.yml";
constexpr wchar_t kUseModulePath[] = L"--jmodulepath, or module-path in launcher.yml";
constexpr wchar_t kUseModule[] =
    L"--jifaceclass, with --jmodulepath and the JVM option --add-modules=MODULE";
constexpr wchar_t kUseJvmLibrary[] = L"--jvmdll, to choose another JVM library";
constexpr wchar_t kUseJava[] = L"the java command: the launcher runs a service and nothing else";
constexpr wchar_t kUseNothing[] = L"nothing: it has no use here";
constexpr wchar_t kUseOptions[] = L"the options themselves, each as a JVM option of its own";

enum class Form {
    Word,          ///< the whole option
    WordAndValue,  ///< likewise, and the next word is its value
    Prefix,        ///< the option begins with it
};

struct JavaCommandOption {
    std::wstring_view spelling;
    Form form;
    const wchar_t* instead;
};

/// What only the java command reads.
constexpr JavaCommandOption kJavaCommandOptions[] = {
    {L"-cp", Form::WordAndValue, kUseClassPath},
    {L"-classpath", Form::WordAndValue, kUseClassPath},
    {L"--class-path", Form::WordAndValue, kUseClassPath},
    {L"--class-path=", Form::Prefix, kUseClassPath},
    {L"-jar", Form::WordAndValue, L"--jclasspath and --jifaceclass"},
    {L"-p", Form::WordAndValue, kUseModulePath},
    {L"--module-path", Form::WordAndValue, kUseModulePath},
    {L"-m", Form::WordAndValue, kUseModule},
    {L"--module", Form::WordAndValue, kUseModule},
    {L"--module=", Form::Prefix, kUseModule},
    {L"@", Form::Prefix, kUseOptions},
    {L"--disable-@files", Form::Word, kUseNothing},
    {L"-J-", Form::Prefix, L"the option without -J"},
    {L"-verbosegc", Form::Word, L"-verbose:gc"},
    {L"-version:", Form::Prefix, L"minimal-java-version in launcher.yml"},
    {L"-server", Form::Word, kUseJvmLibrary},
    {L"-client", Form::Word, kUseJvmLibrary},
    {L"-minimal", Form::Word, kUseJvmLibrary},
    {L"-d32", Form::Word, kUseNothing},
    {L"-d64", Form::Word, kUseNothing},
    {L"-XXaltjvm=", Form::Prefix, kUseJvmLibrary},
    {L"-splash:", Form::Prefix, kUseNothing},
    {L"-Xdiag", Form::Word, kUseNothing},
    {L"-version", Form::Word, kUseJava},
    {L"--version", Form::Word, kUseJava},
    {L"-fullversion", Form::Word, kUseJava},
    {L"--full-version", Form::Word, kUseJava},
    {L"-showversion", Form::Word, kUseJava},
    {L"--show-version", Form::Word, kUseJava},
    {L"-help", Form::Word, kUseJava},
    {L"--help", Form::Word, kUseJava},
    {L"-h", Form::Word, kUseJava},
    {L"-?", Form::Word, kUseJava},
    {L"-X", Form::Word, kUseJava},
    {L"--help-extra", Form::Word, kUseJava},
    {L"-XshowSettings", Form::Prefix, kUseJava},
    {L"-d", Form::WordAndValue, kUseJava},
    {L"--describe-module", Form::WordAndValue, kUseJava},
    {L"--describe-module=", Form::Prefix, kUseJava},
    {L"--dry-run", Form::Word, kUseJava},
    {L"--list-modules", Form::Word, kUseJava},
    {L"--validate-modules", Form::Word, kUseJava},
    {L"--show-module-resolution", Form::Word, L"-Djdk.module.showModuleResolution=true"},
    {L"--source", Form::WordAndValue, kUseJava},
    {L"--source=", Form::Prefix, kUseJava},
};

/// What the JVM reads when the value stands in the same word, behind a '='.
constexpr std::wstring_view kNeedsEqualsSign[] = {
    L"--add-exports",    L"--add-modules",           L"--add-opens",
    L"--add-reads",      L"--enable-native-access",  L"--finalization",
    L"--illegal-access", L"--illegal-native-access", L"--limit-modules",
    L"--patch-module",   L"--upgrade-module-path",   L"--sun-misc-unsafe-memory-access",
};

/// Likewise behind a ':'.
constexpr std::wstring_view kNeedsColon[] = {L"-agentlib", L"-agentpath", L"-javaagent"};

bool fits(const JavaCommandOption& known, std::wstring_view option)
{
    return known.form == Form::Prefix ? option.starts_with(known.spelling)
                                      : option == known.spelling;
}

template <typename List>
bool holds(const List& list, std::wstring_view option)
{
    return std::find(std::begin(list), std::end(list), option) != std::end(list);
}

}  // namespace

std::optional<std::wstring> IgnoredJvmOptions::adviceOn(const std::wstring& option)
{
    const bool isOption = option.starts_with(L'-') || option.starts_with(L'@');
    const bool isValue = valueMayFollow_ && !isOption;
    valueMayFollow_ = false;
    if (isValue) return std::nullopt;

    const auto* const known =
        std::find_if(std::begin(kJavaCommandOptions), std::end(kJavaCommandOptions),
                     [&option](const JavaCommandOption& entry) { return fits(entry, option); });
    if (known != std::end(kJavaCommandOptions)) {
        valueMayFollow_ = known->form == Form::WordAndValue;
        return known->instead;
    }
    const bool needsEqualsSign = holds(kNeedsEqualsSign, option);
    if (needsEqualsSign || holds(kNeedsColon, option)) {
        valueMayFollow_ = true;
        return L"one word, " + option + (needsEqualsSign ? L'=' : L':') + L"VALUE";
    }
    if (isOption) return std::nullopt;
    return L"an option of the JVM: they begin with a hyphen";
}
