/* The exit pool as a C host sees it: only the C declarations. */
#include <KORU/KORU.h>

void AddToExitPoolFromC(CFTypeRef object);

void AddToExitPoolFromC(CFTypeRef object)
{
    AddToExitPool(object);
}
