#pragma once

namespace desk::app
{

/// From now on an interrupt, a termination signal or the end of the terminal does not end the program: the command
/// looks at isInterrupted() and ends in order. A program that is told to outlive its terminal (nohup) does. Nobody
/// listening to the progress is no reason to end.
void catchInterrupts();

bool isInterrupted();

} // namespace desk::app
