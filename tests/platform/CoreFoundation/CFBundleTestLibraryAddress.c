/* Compiled into the bundle test program as plain C for an executable, so
 * that the program holds its own copy of the library's variable, as a
 * program linking the toolkit does. */
extern int CFBundleTestLibraryValue;
int *CFBundleTestLibraryAddress(void);

int *CFBundleTestLibraryAddress(void)
{
    return &CFBundleTestLibraryValue;
}
