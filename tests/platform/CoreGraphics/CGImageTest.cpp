// Data providers and PNG/JPEG images, on files ImageMagick writes.
#include <CoreGraphics/CoreGraphics.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class CGImageTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/koru-cgimage-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        root_ = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + root_ + "'").c_str()); }

    // Runs convert with the arguments; answers the path of the file it
    // wrote.  A name may start with the output format ("PNG8:name").
    std::string Convert(const std::string &arguments, const std::string &name)
    {
        const size_t colon = name.find(':') + 1;  // 0 without a format
        const std::string path = root_ + "/" + name.substr(colon);
        const std::string command = "convert " + arguments + " " + name.substr(0, colon) + "'" + path + "' 2>/dev/null";
        EXPECT_EQ(0, std::system(command.c_str())) << arguments;
        return path;
    }

    static std::string Read(const std::string &path)
    {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    static std::string Bytes(CFDataRef data) { return std::string((const char *)CFDataGetBytePtr(data), CFDataGetLength(data)); }

    std::string Write(const std::string &name, const std::string &bytes)
    {
        const std::string path = root_ + "/" + name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

    CGImageRef Decode(const std::string &path, bool png)
    {
        CGDataProviderRef provider = CGDataProviderCreateWithFilename(path.c_str());
        if (provider == nullptr)
            return nullptr;
        CGImageRef image = png ? CGImageCreateWithPNGDataProvider(provider, nullptr, false, kCGRenderingIntentDefault)
                               : CGImageCreateWithJPEGDataProvider(provider, nullptr, false, kCGRenderingIntentDefault);
        CGDataProviderRelease(provider);
        return image;
    }

    // The first pixel's components.
    std::string FirstPixel(CGImageRef image)
    {
        CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
        const std::string pixel = data ? Bytes(data).substr(0, CGImageGetBitsPerPixel(image) / 8) : "";
        if (data)
            CFRelease(data);
        return pixel;
    }

    std::string root_;
};

struct Layout {
    const char *arguments;
    const char *name;
    size_t components;
    CGImageAlphaInfo alpha;
    std::string firstPixel;
};

TEST_F(CGImageTest, PNGDecodesToItsOwnLayoutAtEightBits)
{
    const Layout layouts[] = {
        {"-size 7x5 xc:'#102030' -define png:color-type=2", "rgb.png", 3, kCGImageAlphaNone, "\x10\x20\x30"},
        {"-size 7x5 xc:'rgba(16,32,48,0.4)' -define png:color-type=6", "rgba.png", 4, kCGImageAlphaLast,
         std::string("\x10\x20\x30\x66", 4)},
        {"-size 7x5 xc:'gray(40)' -define png:color-type=0", "gray.png", 1, kCGImageAlphaNone, "\x28"},
        {"-size 7x5 xc:'#102030' -define png:color-type=2 -depth 16", "deep.png", 3, kCGImageAlphaNone,
         "\x10\x20\x30"},
        {"-size 7x5 xc:'#102030' -interlace PNG", "interlaced.png", 3, kCGImageAlphaNone, "\x10\x20\x30"},
        {"-size 7x5 xc:'#102030' -define png:color-type=3", "palette.png", 3, kCGImageAlphaNone, "\x10\x20\x30"},
        {"-size 7x5 xc:'#102030' -size 7x1 xc:'rgba(255,0,0,0)' -append", "PNG8:transparent-palette.png", 4, kCGImageAlphaLast, std::string("\x10\x20\x30\xff", 4)},
    };
    for (const Layout &layout : layouts) {
        SCOPED_TRACE(layout.name);
        CGImageRef image = Decode(Convert(layout.arguments, layout.name), true);
        ASSERT_NE(nullptr, image);
        EXPECT_EQ(7u, CGImageGetWidth(image));
        EXPECT_EQ(layout.components == 4 && layout.name[0] == 'P' ? 6u : 5u, CGImageGetHeight(image));
        EXPECT_EQ(8u, CGImageGetBitsPerComponent(image));
        EXPECT_EQ(7 * layout.components, CGImageGetBytesPerRow(image));
        EXPECT_EQ(layout.alpha, CGImageGetAlphaInfo(image));
        EXPECT_EQ(layout.firstPixel, FirstPixel(image));
        CGImageRelease(image);
    }
}

TEST_F(CGImageTest, JPEGDecodesToGrayOrRGB)
{
    const Layout layouts[] = {
        {"-size 16x8 xc:'#2060a0' -quality 95", "rgb.jpg", 3, kCGImageAlphaNone, "\x20\x60\xa0"},
        {"-size 16x8 xc:'gray(40)' -colorspace Gray", "gray.jpg", 1, kCGImageAlphaNone, "\x28"},
        {"-size 16x8 xc:'#2060a0' -colorspace CMYK -quality 95", "cmyk.jpg", 3, kCGImageAlphaNone, "\x20\x60\xa0"},
    };
    for (const Layout &layout : layouts) {
        SCOPED_TRACE(layout.name);
        CGImageRef image = Decode(Convert(layout.arguments, layout.name), false);
        ASSERT_NE(nullptr, image);
        EXPECT_EQ(8u, CGImageGetHeight(image));
        EXPECT_EQ(16 * layout.components, CGImageGetBytesPerRow(image));
        EXPECT_EQ(layout.alpha, CGImageGetAlphaInfo(image));
        const std::string pixel = FirstPixel(image);
        ASSERT_EQ(layout.components, pixel.size());
        for (size_t i = 0; i < pixel.size(); ++i) // lossy: close, not equal
            EXPECT_NEAR(static_cast<unsigned char>(layout.firstPixel[i]), static_cast<unsigned char>(pixel[i]), 6);
        CGImageRelease(image);
    }
}

TEST_F(CGImageTest, TruncatedCorruptOrForeignDataDecodesToNothing)
{
    const std::string png = Read(Convert("-size 64x64 plasma:fractal -seed 7", "full.png"));
    const std::string jpeg = Read(Convert("-size 64x64 plasma:fractal -seed 7", "full.jpg"));
    ASSERT_GT(png.size(), 200u);
    ASSERT_GT(jpeg.size(), 200u);
    EXPECT_EQ(nullptr, Decode(Write("cut.png", png.substr(0, png.size() / 2)), true));
    EXPECT_EQ(nullptr, Decode(Write("cut.jpg", jpeg.substr(0, jpeg.size() / 2)), false));
    EXPECT_EQ(nullptr, Decode(Write("header.jpg", jpeg.substr(0, 20)), false));
    EXPECT_EQ(nullptr, Decode(Write("empty.png", ""), true));
    EXPECT_EQ(nullptr, Decode(Write("noise.png", std::string("\x89PNG\r\n\x1a\nnot a png at all", 24)), true));
    EXPECT_EQ(nullptr, Decode(root_ + "/full.png", false)); // PNG bytes are no JPEG
    EXPECT_EQ(nullptr, Decode(root_ + "/full.jpg", true));
    std::string damaged = png;
    damaged[damaged.size() / 2] ^= 0x5a; // a CRC that no longer matches
    EXPECT_EQ(nullptr, Decode(Write("damaged.png", damaged), true));

    CGImageRef whole = Decode(root_ + "/full.jpg", false);  // the files themselves are good
    EXPECT_NE(nullptr, whole);
    CGImageRelease(whole);
}

TEST_F(CGImageTest, TheDecodeArrayHasAPairForEachColourComponent)
{
    // Three pairs for an RGBA image, the last ones at the very end of what
    // can be read: a page that cannot be read follows them.
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void *pages = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, pages);
    ASSERT_EQ(0, mprotect(static_cast<char *>(pages) + page, page, PROT_NONE));
    CGFloat *decode = reinterpret_cast<CGFloat *>(static_cast<char *>(pages) + page) - 6;
    for (int i = 0; i < 6; ++i)
        decode[i] = i % 2;
    CGDataProviderRef provider = CGDataProviderCreateWithFilename(
        Convert("-size 7x5 xc:'rgba(16,32,48,0.4)' -define png:color-type=6", "rgba.png").c_str());
    CGImageRef image = CGImageCreateWithPNGDataProvider(provider, decode, false, kCGRenderingIntentDefault);
    CGDataProviderRelease(provider);
    ASSERT_NE(nullptr, image);
    EXPECT_EQ(1.0, CGImageGetDecode(image)[5]);
    CGImageRelease(image);
    munmap(pages, 2 * page);
}

TEST_F(CGImageTest, ProvidersHoldTheirBytesAndShareThem)
{
    const std::string path = Write("bytes.bin", "some bytes");
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, (const UInt8 *)path.c_str(), path.size(), false);
    CGDataProviderRef provider = CGDataProviderCreateWithURL(url);
    CFRelease(url);
    ASSERT_NE(nullptr, provider);
    unlink(path.c_str()); // read when made: the file is no longer needed
    CFDataRef data = CGDataProviderCopyData(provider);
    EXPECT_EQ(provider, CGDataProviderRetain(provider));
    CGDataProviderRelease(provider);
    CGDataProviderRelease(provider); // the data still holds the bytes
    ASSERT_NE(nullptr, data);
    EXPECT_EQ("some bytes", Bytes(data));
    CFRelease(data);

    static int released = 0;
    static const char bytes[] = "abc";
    provider = CGDataProviderCreateWithData(
        const_cast<char *>(bytes), bytes, 3, [](void *info, const void *data, size_t size) {
            released += info == bytes && data == bytes && size == 3;
        });
    ASSERT_NE(nullptr, provider);
    CGDataProviderRelease(provider);
    EXPECT_EQ(1, released);

    // A mutable data that grows later (its bytes move): the provider keeps what it was given.
    CFMutableDataRef changing = CFDataCreateMutable(nullptr, 0);
    CFDataAppendBytes(changing, reinterpret_cast<const UInt8 *>("abc"), 3);
    provider = CGDataProviderCreateWithCFData(changing);
    ASSERT_NE(nullptr, provider);
    const std::string more(1 << 16, 'z');
    CFDataAppendBytes(changing, reinterpret_cast<const UInt8 *>(more.data()), static_cast<CFIndex>(more.size()));
    CFRelease(changing);
    data = CGDataProviderCopyData(provider);
    CGDataProviderRelease(provider);
    ASSERT_NE(nullptr, data);
    EXPECT_EQ("abc", Bytes(data));
    CFRelease(data);
}

TEST_F(CGImageTest, NothingForMissingOrNullArguments)
{
    CFURLRef web = CFURLCreateWithString(nullptr, CFSTR("http://127.0.0.1/image.png"), nullptr);
    EXPECT_EQ(nullptr, CGDataProviderCreateWithURL(web));
    CFRelease(web);
    EXPECT_EQ(nullptr, CGDataProviderCreateWithURL(reinterpret_cast<CFURLRef>(CFSTR("file:///etc/hostname"))));
    EXPECT_EQ(nullptr, CGDataProviderCreateWithFilename((root_ + "/missing.png").c_str()));
    EXPECT_EQ(nullptr, CGDataProviderCreateWithFilename(root_.c_str())); // a folder
    ASSERT_EQ(0, mkfifo((root_ + "/pipe.png").c_str(), 0600));
    EXPECT_EQ(nullptr, CGDataProviderCreateWithFilename((root_ + "/pipe.png").c_str())); // no writer: no wait
    EXPECT_EQ(nullptr, CGDataProviderCreateWithURL(nullptr));
    EXPECT_EQ(nullptr, CGDataProviderCreateWithData(nullptr, nullptr, 4, nullptr));
    EXPECT_EQ(nullptr, CGImageCreateWithPNGDataProvider(nullptr, nullptr, false, kCGRenderingIntentDefault));
    EXPECT_EQ(0u, CGImageGetWidth(nullptr));
    CGImageRelease(nullptr);
    CGDataProviderRelease(nullptr);
}

} // namespace
