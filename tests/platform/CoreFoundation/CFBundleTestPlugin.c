/* The executable of the test bundles: one exported function to look up. */
int CFBundleTestPluginAnswer(void);

int CFBundleTestPluginAnswer(void)
{
    return 42;
}
