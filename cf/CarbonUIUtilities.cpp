// Carbon user-interface helpers: thin checks and conversions over the
// Control, HIView, nib, scrap, Carbon event and standard alert calls.
#include <KORU/CarbonUIUtilities.h>

#include <KORU/Debug.h>

#include "CFReference.h"

#include <HIToolbox/IBCarbonRuntime.h>

#include <cctype>
#include <cwctype>
#include <vector>

using koru::CFReference;

namespace {

constexpr UniChar kPasteCharacter = 'v';
constexpr UInt32 kCommandAlone = cmdKey;

// The alert runner's failure report, while debug output is on.
void ReportAlertFailure(unsigned long line)
{
    if (KORUDebug())
        CFLogCore("DialogRunGenericAlert", line, CFSTR("Sorry, I caught GOTO error."));
}

// Reads a fixed-size parameter; true only when exactly that many bytes of
// the type are there.
template <typename Value>
bool GetExactParameter(EventRef event, EventParamName name, EventParamType type, Value *value)
{
    ByteCount actualSize = 0;
    return GetEventParameter(event, name, type, nullptr, sizeof(Value), &actualSize, value) == noErr &&
           actualSize == sizeof(Value);
}

bool GetEditTextSelection(ControlRef control, ControlEditTextSelectionRec *selection)
{
    Size actualSize = 0;
    return GetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, sizeof *selection,
                          selection, &actualSize) == noErr &&
           actualSize == sizeof *selection;
}

// The edit text with a reference for the caller, or NULL.
CFStringRef CopyEditText(ControlRef control)
{
    CFStringRef text = nullptr;
    Size actualSize = 0;
    if (control == nullptr ||
        GetControlData(control, kControlEditTextPart, kControlEditTextCFStringTag, sizeof text, &text,
                       &actualSize) != noErr ||
        actualSize != sizeof text)
        return nullptr;
    return text;
}

bool IsArrowCharacter(UniChar charCode)
{
    return charCode >= kLeftArrowCharCode && charCode <= kDownArrowCharCode;
}

} // namespace

/* --- Rectangles ----------------------------------------------------------------- */

extern "C" Rect RectMake(SInt16 top, SInt16 left, SInt16 bottom, SInt16 right)
{
    Rect rect;
    rect.top = top;
    rect.left = left;
    rect.bottom = bottom;
    rect.right = right;
    return rect;
}

extern "C" Boolean RectIsEqualTo(Rect a, Rect b)
{
    return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}

extern "C" SInt16 RectWidth(const Rect *rect)
{
    return rect != nullptr ? static_cast<SInt16>(rect->right - rect->left) : 0;
}

extern "C" SInt16 RectRight(const Rect *rect)
{
    return rect != nullptr ? rect->right : 0;
}

extern "C" void RectHorizontalMove(Rect *rect, SInt16 delta)
{
    if (rect == nullptr)
        return;
    rect->left = static_cast<SInt16>(rect->left + delta);
    rect->right = static_cast<SInt16>(rect->right + delta);
}

extern "C" void RectLeftMoveTo(Rect *rect, SInt16 x)
{
    if (rect != nullptr)
        rect->left = x;
}

extern "C" void RectRightResize(Rect *rect, SInt16 delta)
{
    if (rect != nullptr)
        rect->right = static_cast<SInt16>(rect->right + delta);
}

extern "C" void RectRightMoveTo(Rect *rect, SInt16 x)
{
    if (rect != nullptr)
        RectHorizontalMove(rect, static_cast<SInt16>(x - rect->right));
}

/* --- Version text --------------------------------------------------------------- */

extern "C" CFMutableStringRef NumVersionCopyString(const NumVersion *version, Boolean withNonRelease)
{
    if (version == nullptr)
        return nullptr;
    CFMutableStringRef text = CFStringCreateMutable(kCFAllocatorDefault, 0);
    if (text == nullptr)
        return nullptr;
    // The third number is the whole minor-and-bug-fix byte, not its low
    // nibble: 1.2.3 (0x23) reads 1.2.35.  Kept as hosts have always shown it.
    CFStringAppendFormat(text, nullptr, CFSTR("%X.%i.%i"), static_cast<unsigned>(version->majorRev),
                         version->minorAndBugRev >> 4, static_cast<int>(version->minorAndBugRev));
    switch (version->stage) {
    case 0x20: CFStringAppend(text, CFSTR("d")); break;
    case 0x40: CFStringAppend(text, CFSTR("a")); break;
    case 0x60: CFStringAppend(text, CFSTR("b")); break;
    default: break;
    }
    if (withNonRelease)
        CFStringAppendFormat(text, nullptr, CFSTR(".%i"), static_cast<int>(version->nonRelRev));
    return text;
}

extern "C" CFMutableStringRef VersRecCopyVersionString(const VersRec *record, Boolean withNonRelease)
{
    return record != nullptr ? NumVersionCopyString(&record->numericVersion, withNonRelease) : nullptr;
}

extern "C" CFStringRef VersRecCopyShortString(const VersRec *record, CFStringEncoding encoding)
{
    if (record == nullptr)
        return nullptr;
    return CFStringCreateWithPascalString(kCFAllocatorDefault, record->shortVersion, encoding);
}

extern "C" CFStringRef VersRecCopyLongString(const VersRec *record, CFStringEncoding encoding)
{
    if (record == nullptr)
        return nullptr;
    // As in the 'vers' resource, the long version follows the short one
    // directly; at most 1 + 255 bytes in, so it stays inside the record.
    const unsigned char *longVersion = record->shortVersion + 1 + record->shortVersion[0];
    return CFStringCreateWithPascalString(kCFAllocatorDefault, longVersion, encoding);
}

/* --- Controls ------------------------------------------------------------------- */

extern "C" CFDataRef ControlCopyData(ControlRef control, ControlPartCode part, ResType tag)
{
    if (control == nullptr)
        return nullptr;
    Size size = 0;
    if (GetControlDataSize(control, part, tag, &size) != noErr || size < 0)
        return nullptr;
    std::vector<UInt8> bytes(static_cast<size_t>(size) + 1);
    Size actualSize = 0;
    if (GetControlData(control, part, tag, size, bytes.data(), &actualSize) != noErr || actualSize != size)
        return nullptr;
    return CFDataCreate(kCFAllocatorDefault, bytes.data(), size);
}

extern "C" Boolean ControlSetData(ControlRef control, CFDataRef data, ControlPartCode part, ResType tag)
{
    if (control == nullptr || data == nullptr)
        return false;
    return SetControlData(control, part, tag, CFDataGetLength(data), CFDataGetBytePtr(data)) == noErr;
}

extern "C" CFMutableStringRef ControlCopyString(ControlRef control)
{
    CFReference<CFStringRef> text(CopyEditText(control));
    if (!text)
        return nullptr;
    return CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text.get());
}

extern "C" Boolean ControlSetString(ControlRef control, CFStringRef string)
{
    if (control == nullptr || string == nullptr)
        return false;
    return SetControlData(control, kControlEditTextPart, kControlEditTextCFStringTag, sizeof string, &string) ==
           noErr;
}

extern "C" CFIndex ControlGetLength(ControlRef control)
{
    CFReference<CFStringRef> text(CopyEditText(control));
    return text ? CFStringGetLength(text.get()) : 0;
}

extern "C" CFRange ControlGetSelectionRange(ControlRef control)
{
    ControlEditTextSelectionRec selection;
    if (control == nullptr || !GetEditTextSelection(control, &selection))
        return CFRangeMake(0, 0);
    return CFRangeMake(selection.selStart, selection.selEnd - selection.selStart);
}

extern "C" void ControlSetSelectionRange(ControlRef control, const CFRange *range)
{
    if (control == nullptr || range == nullptr)
        return;
    ControlEditTextSelectionRec selection;
    selection.selStart = static_cast<SInt16>(range->location);
    selection.selEnd = static_cast<SInt16>(range->location + range->length);
    SetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, sizeof selection, &selection);
}

extern "C" Boolean ControlSizeToFit(ControlRef control, ControlSizeToFitProcPtr adjust, void *reference)
{
    if (control == nullptr)
        return false;
    Rect bounds;
    Rect best;
    SInt16 baseLine = 0;
    if (GetControlBounds(control, &bounds) == nullptr || GetBestControlRect(control, &best, &baseLine) != noErr)
        return false;
    if (best.top == 0 && best.left == 0 && best.bottom == 0 && best.right == 0)
        return false;
    if (adjust != nullptr && !adjust(&bounds, &best, reference))
        return true;
    SetControlBounds(control, &best);
    return true;
}

extern "C" SRefCon ControlGetWindowRefCon(ControlRef control)
{
    if (control == nullptr)
        return nullptr;
    WindowRef window = GetControlOwner(control);
    return window != nullptr ? GetWRefCon(window) : nullptr;
}

extern "C" ControlRef ControlForControlID(WindowRef window, OSType signature, SInt32 id)
{
    if (window == nullptr)
        return nullptr;
    ControlID controlID = {signature, id};
    ControlRef control = nullptr;
    return GetControlByID(window, &controlID, &control) == noErr ? control : nullptr;
}

extern "C" SInt32 *ControlIDGetID(ControlID *controlID)
{
    return controlID != nullptr ? &controlID->id : nullptr;
}

extern "C" HIViewRef HIViewFindFromView(HIViewRef view, OSType signature, SInt32 id)
{
    if (view == nullptr)
        return nullptr;
    HIViewID viewID = {signature, id};
    HIViewRef found = nullptr;
    return HIViewFindByID(view, viewID, &found) == noErr ? found : nullptr;
}

extern "C" HIViewRef HIViewFindFromWindow(WindowRef window, OSType signature, SInt32 id)
{
    return window != nullptr ? HIViewFindFromView(HIViewGetRoot(window), signature, id) : nullptr;
}

/* --- Interface files ------------------------------------------------------------ */

extern "C" WindowRef WindowCreateFromNibNameInBundle(CFStringRef nibName, CFStringRef windowName,
                                                     CFBundleRef bundle)
{
    if (nibName == nullptr || windowName == nullptr)
        return nullptr;
    if (bundle == nullptr)
        bundle = CFBundleGetMainBundle();
    IBNibRef nib = nullptr;
    if (bundle == nullptr || CreateNibReferenceWithCFBundle(bundle, nibName, &nib) != noErr)
        return nullptr;
    WindowRef window = nullptr;
    if (CreateWindowFromNib(nib, windowName, &window) != noErr)
        window = nullptr;
    DisposeNibReference(nib);
    return window;
}

extern "C" WindowRef WindowCreateFromNibName(CFStringRef nibName, CFStringRef windowName)
{
    return WindowCreateFromNibNameInBundle(nibName, windowName, nullptr);
}

extern "C" Boolean MenuBarSetFromNibName(CFStringRef nibName, CFStringRef menuBarName)
{
    if (nibName == nullptr || menuBarName == nullptr)
        return false;
    IBNibRef nib = nullptr;
    if (CreateNibReference(nibName, &nib) != noErr)
        return false;
    OSStatus status = SetMenuBarFromNib(nib, menuBarName);
    DisposeNibReference(nib);
    return status == noErr;
}

extern "C" Boolean WindowDumpControlHierarchy(void)
{
    CFLogStringCore("WindowDumpControlHierarchy", 42, CFSTR("Sorry, I failed."));
    return false;
}

/* --- Scrap and events ----------------------------------------------------------- */

extern "C" ScrapRef ScrapGetCurrentScrap(void)
{
    ScrapRef scrap = nullptr;
    return GetCurrentScrap(&scrap) == noErr ? scrap : nullptr;
}

extern "C" CFDataRef ScrapCopyDataOfFlavor(ScrapRef scrap, ScrapFlavorType flavorType)
{
    if (scrap == nullptr)
        return nullptr;
    Size size = 0;
    if (GetScrapFlavorSize(scrap, flavorType, &size) != noErr || size <= 0)
        return nullptr;
    std::vector<UInt8> bytes(static_cast<size_t>(size));
    Size readSize = size;
    if (GetScrapFlavorData(scrap, flavorType, &readSize, bytes.data()) != noErr || readSize != size)
        return nullptr;
    return CFDataCreate(kCFAllocatorDefault, bytes.data(), size);
}

extern "C" CFMutableStringRef ScrapCopyString(ScrapRef scrap)
{
    CFReference<CFDataRef> data(ScrapCopyDataOfFlavor(scrap, kScrapFlavorTypeText));
    if (!data)
        return nullptr;
    CFReference<CFStringRef> text(CFStringCreateWithBytes(kCFAllocatorDefault, CFDataGetBytePtr(data.get()),
                                                          CFDataGetLength(data.get()),
                                                          CFStringGetSystemEncoding(), false));
    if (!text)
        return nullptr;
    return CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text.get());
}

extern "C" UInt32 EventGetControlCommandID(EventRef event)
{
    ControlRef control = nullptr;
    UInt32 commandID = 0;
    if (event == nullptr || !GetExactParameter(event, kEventParamDirectObject, typeControlRef, &control) ||
        control == nullptr || GetControlCommandID(control, &commandID) != noErr)
        return 0;
    return commandID;
}

extern "C" EventTypeSpec EventTypeSpecMake(UInt32 eventClass, UInt32 eventKind)
{
    EventTypeSpec eventType = {eventClass, eventKind};
    return eventType;
}

extern "C" Boolean EventIsPaste(EventRef event)
{
    if (event == nullptr)
        return false;
    UniChar typed = 0;
    if (!GetExactParameter(event, kEventParamTextInputSendText, typeUnicodeText, &typed) ||
        typed != kPasteCharacter)
        return false;
    // An event reference is the size of a pointer here (8 bytes, where the
    // 32-bit toolbox had 4).
    EventRef keyboardEvent = nullptr;
    if (!GetExactParameter(event, kEventParamTextInputSendKeyboardEvent, typeEventRef, &keyboardEvent) ||
        keyboardEvent == nullptr)
        return false;
    UInt32 modifiers = 0;
    return GetExactParameter(keyboardEvent, kEventParamKeyModifiers, typeUInt32, &modifiers) &&
           modifiers == kCommandAlone;
}

/* --- Key classification --------------------------------------------------------- */

extern "C" Boolean KeyTypeIsArrow(UInt32, UniChar charCode, UInt16)
{
    return IsArrowCharacter(charCode);
}

extern "C" Boolean KeyTypeIsArrowWithShift(UInt32, UniChar charCode, UInt16 modifiers)
{
    return IsArrowCharacter(charCode) && (modifiers & (shiftKey | rightShiftKey)) != 0;
}

extern "C" Boolean KeyTypeIsDelete(UInt32, UniChar charCode, UInt16)
{
    return charCode == kDeleteCharCode || charCode == kBackspaceCharCode;
}

extern "C" Boolean KeyTypeIsNumber(UInt32, UniChar charCode, UInt16 modifiers)
{
    return charCode <= 255 && std::isdigit(charCode) && modifiers == 0;
}

extern "C" Boolean KeyTypeIsPaste(UInt32, UniChar charCode, UInt16 modifiers)
{
    return charCode == kPasteCharacter && modifiers == kCommandAlone;
}

extern "C" Boolean KeyTypeIsShortcut(UInt32, UniChar, UInt16 modifiers)
{
    return (modifiers & cmdKey) != 0;
}

extern "C" Boolean KeyTypeIsControl(UInt32, UniChar charCode, UInt16)
{
    // The narrow classes cover 0..127; above that the wide ones classify.
    if (charCode <= 127)
        return std::iscntrl(charCode) && !std::isspace(charCode);
    return std::iswcntrl(charCode) && !std::iswspace(charCode);
}

/* --- Alert ----------------------------------------------------------------------- */

extern "C" DialogItemIndex DialogRunGenericAlert(AlertType alertType, WindowRef parent, Boolean movable,
                                                 CFStringRef errorText, CFStringRef explanationText,
                                                 Boolean helpButton, CFStringRef defaultText,
                                                 CFStringRef cancelText, CFStringRef otherText,
                                                 SInt16 defaultButton, SInt16 cancelButton, UInt16 position,
                                                 OptionBits flags, ModalFilterUPP filter,
                                                 EventTargetRef notifyTarget)
{
    AlertStdCFStringAlertParamRec param;
    if (GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne) != noErr) {
        ReportAlertFailure(791);
        return 0;
    }
    param.movable = movable;
    param.helpButton = helpButton;
    if (defaultText != nullptr)
        param.defaultText = defaultText;
    if (cancelText != nullptr)
        param.cancelText = cancelText;
    if (otherText != nullptr)
        param.otherText = otherText;
    if (defaultButton != 0)
        param.defaultButton = defaultButton;
    if (cancelButton != 0)
        param.cancelButton = cancelButton;
    if (position != 0)
        param.position = position;
    if (flags != 0)
        param.flags = flags;

    DialogRef dialog = nullptr;
    if (parent != nullptr) {
        if (CreateStandardSheet(alertType, errorText, explanationText, &param, notifyTarget, &dialog) != noErr) {
            ReportAlertFailure(810);
            return 0;
        }
        if (ShowSheetWindow(GetDialogWindow(dialog), parent) != noErr) {
            ReportAlertFailure(811);
            DisposeDialog(dialog);
            return 0;
        }
        return 1;
    }
    if (CreateStandardAlert(alertType, errorText, explanationText, &param, &dialog) != noErr) {
        ReportAlertFailure(805);
        return 0;
    }
    DialogItemIndex itemHit = 0;
    if (RunStandardAlert(dialog, filter, &itemHit) != noErr) {
        ReportAlertFailure(806);
        return 0;
    }
    return itemHit;
}
