#include "LocalizationSupport.h"

#include <cctype>
#include <cwctype>
#include <string_view>

#include "ISystemUtils.h"
#include "LocalizationResource_Root.h"
#include "LocalizationResource_Ru.h"

namespace {

/// The resource for the environment's locale, else for its language, else
/// `fallback`.
const ILocalizationResource& choose(
    const std::map<std::wstring, const ILocalizationResource*>& resources,
    const ILocalizationResource& fallback, const ISystemUtils& systemUtils)
{
    const auto byLocale = resources.find(systemUtils.getLocaleName());
    if (byLocale != resources.end()) return *byLocale->second;
    const auto byLanguage = resources.find(systemUtils.getLanguageName());
    return byLanguage == resources.end() ? fallback : *byLanguage->second;
}

}  // namespace

LocalizationSupport::LocalizationSupport(const ISystemUtils& systemUtils)
    : english_(std::make_unique<LocalizationResource_Root>()),
      russian_(std::make_unique<LocalizationResource_Ru>()),
      resources_{{english_->getLanguage(), english_.get()},
                 {russian_->getLanguage(), russian_.get()}},
      catalogue_(choose(resources_, *english_, systemUtils))
{
    catalogue_.activate();
}

LocalizationSupport::~LocalizationSupport() = default;

std::wstring getLanguageFromJvmOptions(const std::vector<std::wstring>& jvmOptions)
{
    static constexpr std::wstring_view kProperty = L"-Duser.language=";
    for (const std::wstring& option : jvmOptions) {
        const std::size_t at = option.find(kProperty);  // anywhere, not only in front: required
        if (at == std::wstring::npos) continue;
        std::wstring language;
        for (std::size_t i = at + kProperty.size(); i < option.size(); ++i) {
            if (std::iswspace(static_cast<std::wint_t>(option[i]))) break;
            // Characters above U+00FF lose their upper bits; required.
            language += static_cast<wchar_t>(std::tolower(static_cast<unsigned char>(option[i])));
        }
        return language;
    }
    return {};
}
