/* A library that the bundle test both links and loads as a bundle's
 * executable: one variable and a function that reads it. */
int CFBundleTestLibraryValue = 7;
int CFBundleTestLibraryRead(void);

int CFBundleTestLibraryRead(void)
{
    return CFBundleTestLibraryValue;
}
