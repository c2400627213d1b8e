// Images from the resources of a bundle made in a private folder.
#include <KORU/BundleImages.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class BundleImagesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/koru-bundleimages-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        root_ = pattern;
        const std::string bundle = root_ + "/Images.bundle";
        resources_ = bundle + "/Resources";
        mkdir(bundle.c_str(), 0755);
        mkdir(resources_.c_str(), 0755);
        std::ofstream(resources_ + "/Info-gnustep.plist") << "{ CFBundleIdentifier = org.koru.test.images; }\n";
        const std::string tool = access("/usr/bin/convert", X_OK) == 0 ? "/usr/bin/convert" : "convert";
        const std::string make = tool + " -size 12x9 xc:'#336699' +noise Random -strip '" + resources_;
        ASSERT_EQ(0, std::system((make + "/picture.png'").c_str()));
        ASSERT_EQ(0, std::system((make + "/upper.PNG'").c_str()));
        ASSERT_EQ(0, std::system((make + "/photo.jpg'").c_str()));
        ASSERT_EQ(0, std::system((make + "/anim.gif'").c_str()));
        ASSERT_EQ(0, std::system(("cp '" + resources_ + "/photo.jpg' '" + resources_ + "/photo.bin'").c_str()));
        Truncate("picture.png", "cut.png");
        Truncate("photo.jpg", "cut.jpg");
        CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(bundle.c_str()),
                                                               static_cast<CFIndex>(bundle.size()), true);
        bundle_ = CFBundleCreate(nullptr, url);
        CFRelease(url);
        ASSERT_NE(nullptr, bundle_);
    }

    void TearDown() override
    {
        if (bundle_ != nullptr)
            CFRelease(bundle_);
        std::system(("rm -rf '" + root_ + "'").c_str());
    }

    void Truncate(const char *from, const char *to)
    {
        std::ifstream in(resources_ + "/" + from, std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::ofstream(resources_ + "/" + to, std::ios::binary) << bytes.substr(0, bytes.size() * 2 / 3);
    }

    // The image's width and component count ("12x3"), or "none".
    std::string Load(CFStringRef name, CFStringRef type, CFBundleRef bundle)
    {
        CGImageRef image = CGImageCreateWithBundleResource(name, type, bundle);
        if (image == nullptr)
            return "none";
        std::string shape = std::to_string(CGImageGetWidth(image)) + "x" +
                            std::to_string(CGImageGetBitsPerPixel(image) / CGImageGetBitsPerComponent(image));
        CGImageRelease(image);
        return shape;
    }

    std::string root_, resources_;
    CFBundleRef bundle_ = nullptr;
};

TEST_F(BundleImagesTest, TheTypeChoosesTheDecoder)
{
    EXPECT_EQ("12x3", Load(CFSTR("picture"), CFSTR("png"), bundle_));
    EXPECT_EQ("12x3", Load(CFSTR("upper"), CFSTR("PNG"), bundle_));
    EXPECT_EQ("12x3", Load(CFSTR("photo"), CFSTR("jpg"), bundle_));
    EXPECT_EQ("12x3", Load(CFSTR("photo"), CFSTR("bin"), bundle_)); // any other type is JPEG
    EXPECT_EQ("none", Load(CFSTR("anim"), CFSTR("gif"), bundle_));  // ... and a GIF is none
}

TEST_F(BundleImagesTest, MissingCorruptOrUnnamedResourcesGiveNothing)
{
    EXPECT_EQ("none", Load(CFSTR("cut"), CFSTR("png"), bundle_));
    EXPECT_EQ("none", Load(CFSTR("cut"), CFSTR("jpg"), bundle_));
    EXPECT_EQ("none", Load(CFSTR("missing"), CFSTR("png"), bundle_));
    EXPECT_EQ("none", Load(CFSTR("picture"), CFSTR("PNG"), bundle_)); // picture.PNG is not there
    EXPECT_EQ("none", Load(nullptr, CFSTR("png"), bundle_));
    EXPECT_EQ("none", Load(CFSTR("picture"), nullptr, bundle_));
    EXPECT_EQ("none", Load(CFSTR("picture"), CFSTR("png"), nullptr)); // the main bundle has none
    EXPECT_EQ(nullptr, CGDataProviderCreateWithBundleResource(CFSTR("missing"), CFSTR("png"), bundle_));
    EXPECT_EQ(nullptr, CGDataProviderCreateWithBundleResource(CFSTR("picture"), CFSTR("png"),
                                                              (CFBundleRef)(CFSTR("not a bundle"))));
    EXPECT_EQ(nullptr, CGDataProviderCreateWithBundleResource(reinterpret_cast<CFStringRef>(bundle_), CFSTR("png"),
                                                              bundle_));
}

} // namespace
