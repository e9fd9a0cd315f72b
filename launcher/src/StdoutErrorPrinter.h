// StdoutErrorPrinter: shows the inventory library's errors to the user.
#pragma once

#include "IInventoryErrorConsumer.h"

class IConsole;

class StdoutErrorPrinter final : public IInventoryErrorConsumer {
public:
    /// `console` must outlive the printer.
    explicit StdoutErrorPrinter(IConsole& console) : console_(console) {}

    /// Prints a line on standard output; nothing for null.
    void consume(const char* utf8Text) override;

private:
    IConsole& console_;
};
