// ScopedCatalogue: makes one language's texts the active ones for a scope.
#pragma once

#include "LocalizationResource_Root.h"
#include "MessageCatalogue.h"

class ScopedCatalogue final {
public:
    explicit ScopedCatalogue(const ILocalizationResource& language = LocalizationResource_Root())
        : catalogue_(language)
    {
        catalogue_.activate();
    }

private:
    MessageCatalogue catalogue_;
};
