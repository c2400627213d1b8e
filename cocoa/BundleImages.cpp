// Images from bundle resources, decoded by the platform's Core Graphics.
#include <KORU/BundleImages.h>

CGDataProviderRef CGDataProviderCreateWithBundleResource(CFStringRef name, CFStringRef type, CFBundleRef bundle)
{
    if (name == nullptr || type == nullptr || CFGetTypeID(name) != CFStringGetTypeID() ||
        CFGetTypeID(type) != CFStringGetTypeID())
        return nullptr;
    if (bundle == nullptr)
        bundle = CFBundleGetMainBundle();
    if (bundle == nullptr || CFGetTypeID(bundle) != CFBundleGetTypeID())
        return nullptr;
    CFURLRef url = CFBundleCopyResourceURL(bundle, name, type, nullptr);
    if (url == nullptr)
        return nullptr;
    CGDataProviderRef provider = CGDataProviderCreateWithURL(url);
    CFRelease(url);
    return provider;
}

CGImageRef CGImageCreateWithBundleResource(CFStringRef name, CFStringRef type, CFBundleRef bundle)
{
    CGDataProviderRef provider = CGDataProviderCreateWithBundleResource(name, type, bundle);
    if (provider == nullptr)
        return nullptr;
    const bool png = CFStringCompare(type, CFSTR("png"), kCFCompareCaseInsensitive) == kCFCompareEqualTo;
    CGImageRef image = png ? CGImageCreateWithPNGDataProvider(provider, nullptr, false, kCGRenderingIntentDefault)
                           : CGImageCreateWithJPEGDataProvider(provider, nullptr, false, kCGRenderingIntentDefault);
    CGDataProviderRelease(provider);
    return image;
}
