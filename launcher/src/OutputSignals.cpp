#include "OutputSignals.h"

#include <csignal>

void ignoreOutputSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}
