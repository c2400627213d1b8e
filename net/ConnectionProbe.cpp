#include "ConnectionProbe.h"

#define KORU_WIDEN2(text) L##text
#define KORU_WIDEN(text) KORU_WIDEN2(text)

const wchar_t *koru::ConnectionProbeURL()
{
    return KORU_WIDEN(KORU_CONNECTION_PROBE_URL);
}
