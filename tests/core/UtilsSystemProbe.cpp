/* Prints what Utils reads from the user defaults, for UtilsSystemTest to run
 * with an environment of its choosing. */
#include <KORU/Utils.h>

#include <cstdio>

int main()
{
    printf("language=%s\n", Utils::wstring2utf8(Utils::getLanguage()).c_str());
    printf("country=%s\n", Utils::wstring2utf8(Utils::getCountry()).c_str());
    return 0;
}
