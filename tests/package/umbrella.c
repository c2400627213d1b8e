/* Compiled as C, C++ and Objective-C: the umbrella header alone, with the
 * host's strictest warnings, must compile cleanly in each language. */
#include <KORU/KORU.h>

int main(void)
{
    return 0;
}
