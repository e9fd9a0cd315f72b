#include "AdditionalTexts.h"

#include "MessageIds.h"

namespace {

constexpr MessageText kEnglish[] = {
    {IDS_FILE_VARIABLE_HOLDS_ITSELF,
     "Error reading file '%ls'. The value of the variable %ls contains the variable itself: "
     "'%ls'."},
    {IDS_CANNOT_DETACH, "Cannot run in the background. Error: %ls"},
};

constexpr MessageText kRussian[] = {
    {IDS_FILE_VARIABLE_HOLDS_ITSELF,
     "Ошибка чтения файла '%ls'. Значение переменной %ls содержит саму эту переменную: '%ls'."},
    {IDS_CANNOT_DETACH, "Не удается перейти в фоновый режим. Ошибка: %ls"},
};

}  // namespace

void insertAdditionalTexts(const std::wstring& language, MessageTexts& catalogue)
{
    insertTexts(language == L"ru" ? kRussian : kEnglish, catalogue);
}
