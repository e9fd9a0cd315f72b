// LocalizationResource_Root: the English message table.
#pragma once

#include <string>

#include "ILocalizationResource.h"

class LocalizationResource_Root final : public ILocalizationResource {
public:
    [[nodiscard]] std::wstring getLanguage() const override;
    void fill(MessageTexts& catalogue) const override;
};
