#pragma once

// True when standard error is a terminal, where a live progress line makes sense.
bool standardErrorIsTerminal();
