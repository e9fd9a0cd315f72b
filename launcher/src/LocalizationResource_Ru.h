// LocalizationResource_Ru: the Russian message table.
#pragma once

#include <string>

#include "ILocalizationResource.h"

class LocalizationResource_Ru final : public ILocalizationResource {
public:
    [[nodiscard]] std::wstring getLanguage() const override;
    void fill(MessageTexts& catalogue) const override;
};
