#include "StdoutErrorPrinter.h"

#include "IConsole.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

void StdoutErrorPrinter::consume(const char* utf8Text)
{
    if (!utf8Text) return;
    console_.writeLine(getMessage(IDS_INVENTORY_CALL_ERROR) + L": " + toWide(utf8Text));
}
