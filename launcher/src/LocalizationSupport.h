// LocalizationSupport: chooses the language of a run from the locale and
// makes its texts the active catalogue. Constructed once, on the main thread,
// before anything asks for a text. The program never destroys its instance:
// threads of the JVM may still look texts up while the process ends.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ILocalizationResource.h"
#include "MessageCatalogue.h"

class ISystemUtils;

class LocalizationSupport {
public:
    /// Looks up the locale name ("ru_RU"), then the language name ("ru"), and
    /// falls back to English. Becomes the active instance if there is none.
    explicit LocalizationSupport(const ISystemUtils& systemUtils);
    virtual ~LocalizationSupport();
    LocalizationSupport(const LocalizationSupport&) = delete;
    LocalizationSupport& operator=(const LocalizationSupport&) = delete;

private:
    std::unique_ptr<ILocalizationResource> english_;
    std::unique_ptr<ILocalizationResource> russian_;
    std::map<std::wstring, const ILocalizationResource*> resources_;  ///< by language name
    MessageCatalogue catalogue_;
};

/// The language that the first JVM option holding "-Duser.language=" asks for:
/// the text behind it up to white space, lower-cased on the lowest 8 bits of
/// each character. Empty when no option asks, or asks for nothing.
[[nodiscard]] std::wstring getLanguageFromJvmOptions(const std::vector<std::wstring>& jvmOptions);
