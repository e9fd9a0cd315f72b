// IInventory: what the inventory library knows of installed Javas.
#pragma once

#include <cstdint>
#include <string>

class IInventoryErrorConsumer;

class IInventory {
public:
    /// Loads the library; a failure becomes the last error. Never throws a
    /// LauncherException.
    virtual void initialize() = 0;
    /// Home of a Java of at least the feature version `minimalJavaVersion`, or
    /// empty when the library knows none or cannot be asked. Its error becomes
    /// the last error and goes to `errorConsumer`. Never throws a
    /// LauncherException. Requires initialize() without an error.
    [[nodiscard]] virtual std::wstring readPathToJavaComponent(
        std::int32_t minimalJavaVersion, IInventoryErrorConsumer& errorConsumer) = 0;
    /// Of the last call of either; empty when there was none.
    [[nodiscard]] virtual const std::wstring& getLastError() const = 0;
    virtual ~IInventory() = default;
};
