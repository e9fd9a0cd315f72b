// CliParser: the definition of a program's command line, with modes, switches
// and options, and the two things done with it: parsing and showing the usage.
// Owns the definition. It knows nothing of the program.
//
// A bad definition throws LauncherException; a bad command line never does.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CliMode.h"
#include "CliParseResult.h"

class CliParser final {
public:
    /// The new mode, for its switches and options to be added. Throws "Mode
    /// name already defined" (code 1).
    CliMode& addMode(const std::wstring& name, const std::wstring& usage,
                     const std::wstring& description);
    /// The mode of a command line that names none; every definition needs one.
    /// Throws "The default mode was already set" (code 21) or as addMode().
    CliMode& setDefaultMode(const std::wstring& name, const std::wstring& usage,
                            const std::wstring& description);

    /// Parses a whole command line, element 0 (the program path) being ignored.
    /// Goes on after an error, so that the result holds all of them. Throws
    /// only without a default mode (code 21).
    [[nodiscard]] CliParseResult parse(const std::vector<std::wstring>& arguments) const;

    /// The mode of that name, or the default mode when `name` selects one of
    /// its switches; null when there is none.
    [[nodiscard]] const CliMode* findMode(std::wstring_view name) const;
    /// The same; throws IDS_UNSUPPORTED_MODE (code 1) when there is none.
    [[nodiscard]] const CliMode& getMode(const std::wstring& name) const;

    /// The usage of `mode`. A switch that was given with the default mode and
    /// names another mode ("help start") shows that one instead.
    [[nodiscard]] std::wstring renderUsage(const CliMode& mode, const CliParseResult& result,
                                           const std::wstring& programName) const;

private:
    void checkNameIsFree(const std::wstring& name) const;
    [[nodiscard]] const CliMode& defaultMode() const;
    [[nodiscard]] const CliMode& modeToShow(const CliMode& mode,
                                            const CliParseResult& result) const;

    std::vector<std::unique_ptr<CliMode>> modes_;  ///< in the order of definition
    std::unique_ptr<CliMode> defaultMode_;
};
