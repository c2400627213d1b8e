/* DebugStr on the standard error stream. */
#include <CoreServices/Debugging.h>

#include <unistd.h>

extern "C" void DebugStr(ConstStr255Param debuggerMsg)
{
    if (debuggerMsg == nullptr)
        return;
    // One write for text and newline, so that lines of several threads never mix.
    char line[256];
    size_t length = debuggerMsg[0];
    for (size_t i = 0; i < length; ++i)
        line[i] = static_cast<char>(debuggerMsg[i + 1]);
    line[length] = '\n';
    ssize_t ignored = write(STDERR_FILENO, line, length + 1);
    (void)ignored;
}
