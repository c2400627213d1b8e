// The probe of IsConnectionUp for the tests: a loopback address, so that the
// test never reaches beyond this machine.  It takes the place of the
// library's own definition, which names a public web site.
#include "ConnectionProbe.h"

const wchar_t *koru::ConnectionProbeURL()
{
    return L"http://127.0.0.1:9/probe";
}
