// MessageCatalogue: the texts of the chosen language, and how an id becomes a
// text for the user. Filled once at start-up and read-only from then on, so
// every thread may look texts up without a lock.
#pragma once

#include <cstddef>
#include <cwchar>
#include <string>
#include <string_view>
#include <vector>

#include "ILocalizationResource.h"

class MessageCatalogue final {
public:
    /// Takes the texts of `resource`, whose tables must outlive the catalogue,
    /// and the additional ones of its language.
    explicit MessageCatalogue(const ILocalizationResource& resource);
    /// Withdraws the catalogue if it is the active one.
    ~MessageCatalogue();
    MessageCatalogue(const MessageCatalogue&) = delete;
    MessageCatalogue& operator=(const MessageCatalogue&) = delete;

    /// Makes this the catalogue of getMessage() unless another one already is.
    void activate() const;

    /// The text of `id`, or `id` itself when the catalogue does not hold it.
    [[nodiscard]] std::wstring text(const char* id) const;

private:
    MessageTexts texts_;
};

/// The text of `id` in the active catalogue, or `id` itself when it has none.
/// Throws LauncherException "LocalizationSupport was not initialized."
/// (code 21) while no catalogue is active.
[[nodiscard]] std::wstring getMessage(const char* id);

namespace message_detail {

inline const wchar_t* argument(const std::wstring& value)
{
    return value.c_str();
}
inline const wchar_t* argument(const wchar_t* value)
{
    return value;
}
inline int argument(int value)
{
    return value;
}

/// Room that a formatted argument can take, in wide characters.
inline std::size_t room(const wchar_t* value)
{
    return std::wcslen(value);
}
inline std::size_t room(int)
{
    return std::string_view("-2147483648").size();
}

}  // namespace message_detail

/// The text of `id` with its placeholders filled in their order: wide text
/// (string or terminated array, not null) for "%ls", an int for "%d". Empty if
/// formatting fails. Throws as getMessage().
template <typename... Arguments>
[[nodiscard]] std::wstring formatMessage(const char* id, const Arguments&... arguments)
{
    const std::wstring format = getMessage(id);
    const std::size_t size =
        ((format.size() + 1) + ... + message_detail::room(message_detail::argument(arguments)));
    std::vector<wchar_t> text(size);
    const int length =
        std::swprintf(text.data(), size, format.c_str(), message_detail::argument(arguments)...);
    return length < 0 ? std::wstring()
                      : std::wstring(text.data(), static_cast<std::size_t>(length));
}
