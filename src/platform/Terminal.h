#pragma once

// True when standard error is a terminal, where a live progress line makes sense.
bool standardErrorIsTerminal();
// True when standard input is a terminal, where a command may ask a question.
bool standardInputIsTerminal();
