#include "StdoutErrorPrinter.h"

#include "IConsole.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "TextConversion.h"

void StdoutErrorPrinter::consume(const char* utf8Text)
{
    if (!utf8Text) return;
    // No table holds this id: the line is the id itself (required).
    console_.writeLine(formatMessage(IDS_INVENTORY_CALL_ERROR, toWide(utf8Text)));
}
