// AdditionalTexts: the messages that the fixed tables of the languages lack, in
// every language.
#pragma once

#include <string>

#include "ILocalizationResource.h"

/// Inserts them into `catalogue`, in Russian for the language "ru", else in
/// English.
void insertAdditionalTexts(const std::wstring& language, MessageTexts& catalogue);
