#include "MessageCatalogue.h"

#include <atomic>

#include "AdditionalTexts.h"
#include "LauncherException.h"
#include "TextConversion.h"

namespace {

/// Published with its texts filled; read by every thread.
std::atomic<const MessageCatalogue*> activeCatalogue{nullptr};

}  // namespace

MessageCatalogue::MessageCatalogue(const ILocalizationResource& resource)
{
    resource.fill(texts_);
    insertAdditionalTexts(resource.getLanguage(), texts_);
}

MessageCatalogue::~MessageCatalogue()
{
    const MessageCatalogue* self = this;
    activeCatalogue.compare_exchange_strong(self, nullptr, std::memory_order_acq_rel);
}

void MessageCatalogue::activate() const
{
    const MessageCatalogue* none = nullptr;
    activeCatalogue.compare_exchange_strong(none, this, std::memory_order_acq_rel);
}

std::wstring MessageCatalogue::text(const char* id) const
{
    const auto entry = texts_.find(id);
    return toWide(entry == texts_.end() ? id : entry->second);
}

std::wstring getMessage(const char* id)
{
    const MessageCatalogue* catalogue = activeCatalogue.load(std::memory_order_acquire);
    if (!catalogue) throw LauncherException(L"LocalizationSupport was not initialized.");
    return catalogue->text(id);
}
