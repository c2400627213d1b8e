// A C++ host that calls only the class layer, built as the README says.  It
// names nothing from the platform library, so only libKORU's own run path
// can bring that library in.
#include <KORU/KORU.h>

#include <cstdio>

int main()
{
    bool ok = Utils::int2string(-42) == "-42" && Utils::bytesize2string(0) != "";
    std::puts(ok ? "class host: ok" : "class host: FAILED");
    return ok ? 0 : 1;
}
