// OutputSignals: sees to it that a write that cannot be done fails, and does
// not end the process.
#pragma once

/// Ignores SIGPIPE and SIGXFSZ: a full log or a reader that has gone must stop
/// neither a service nor the stop of one, nor change the exit status. To be
/// called before there are any threads. A JVM takes both signals for itself,
/// so that its children do not inherit this.
void ignoreOutputSignals();
