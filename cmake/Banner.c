/* The toolkit's identification string, findable with what(1) or strings(1)
 * in the binary itself as well as in the bundle's Info plist. */
__attribute__((used)) static const char kKORUBanner[] = "@(#)KORU v1.0 (2006-03-31)";
