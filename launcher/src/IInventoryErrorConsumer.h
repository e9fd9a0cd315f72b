// IInventoryErrorConsumer: is told what the inventory library says of its
// failures.
#pragma once

class IInventoryErrorConsumer {
public:
    /// `utf8Text` may be null and is valid during the call only. Throws no
    /// LauncherException.
    virtual void consume(const char* utf8Text) = 0;
    virtual ~IInventoryErrorConsumer() = default;
};
