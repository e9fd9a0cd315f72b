// InventoryAndEnvJavaFinder: asks the inventory library for a Java and then
// looks at JAVA_HOME. For the main thread.
#pragma once

#include "IJavaFinder.h"

class IInventory;
class IInventoryErrorConsumer;
class IJavaChecker;
class IProcessUtils;

class InventoryAndEnvJavaFinder final : public IJavaFinder {
public:
    /// All must outlive the finder. `checker` judges JAVA_HOME only.
    InventoryAndEnvJavaFinder(IInventory& inventory, const IJavaChecker& checker,
                              IInventoryErrorConsumer& errorConsumer,
                              const IProcessUtils& processUtils)
        : inventory_(inventory),
          checker_(checker),
          errorConsumer_(errorConsumer),
          processUtils_(processUtils)
    {
    }

    /// JAVA_HOME is not looked at when the library cannot be used; it is when
    /// the library finds nothing, whether it tells an error or not.
    [[nodiscard]] JavaFinderResult find(std::int32_t minimalJavaVersion) override;
    [[nodiscard]] const std::wstring& getErrors() const override { return errors_; }

private:
    [[nodiscard]] JavaFinderResult findInEnvironment(std::int32_t minimalJavaVersion) const;

    IInventory& inventory_;
    const IJavaChecker& checker_;
    IInventoryErrorConsumer& errorConsumer_;
    const IProcessUtils& processUtils_;
    std::wstring errors_;
};
