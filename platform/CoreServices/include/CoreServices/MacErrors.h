/* Result codes of the Mac toolbox, with their Mac values, so that callers and
 * the platform layer speak the same numbers. */
#ifndef CORESERVICES_MACERRORS_H
#define CORESERVICES_MACERRORS_H

#include <MacTypes.h>

enum {
    /* General and memory. */
    qErr = -1, unimpErr = -4, userCanceledErr = -128,
    memFullErr = -108, nilHandleErr = -109, memAdrErr = -110, memWZErr = -111,
    memPurErr = -112, memLockedErr = -117,

    /* File Manager. */
    dirFulErr = -33, dskFulErr = -34, nsvErr = -35, ioErr = -36, bdNamErr = -37,
    fnOpnErr = -38, eofErr = -39, posErr = -40, mFulErr = -41, tmfoErr = -42,
    fnfErr = -43, wPrErr = -44, fLckdErr = -45, vLckdErr = -46, fBsyErr = -47,
    dupFNErr = -48, opWrErr = -49, paramErr = -50, rfNumErr = -51, gfpErr = -52,
    volOffLinErr = -53, permErr = -54, volOnLinErr = -55, nsDrvErr = -56,
    noMacDskErr = -57, extFSErr = -58, fsRnErr = -59, badMDBErr = -60,
    wrPermErr = -61, dirNFErr = -120, tmwdoErr = -121, badMovErr = -122,
    wrgVolTypErr = -123, volGoneErr = -124,
    fidNotFound = -1300, fidExists = -1301, notAFileErr = -1302, diffVolErr = -1303,
    catChangedErr = -1304, sameFileErr = -1306, badFidErr = -1307,
    fileBoundsErr = -1309, fsDataTooBigErr = -1310,
    errFSUnknownCall = -1400, errFSBadFSRef = -1401, errFSBadForkName = -1402,
    errFSBadBuffer = -1403, errFSBadForkRef = -1404, errFSBadInfoBitmap = -1405,
    errFSMissingCatInfo = -1406, errFSNotAFolder = -1407, errFSForkNotFound = -1409,
    errFSNameTooLong = -1410, errFSMissingName = -1411, errFSBadPosMode = -1412,
    errFSBadAllocFlags = -1413, errFSNoMoreItems = -1417, errFSBadItemCount = -1418,
    errFSBadSearchParams = -1419, errFSRefsDifferent = -1420, errFSForkExists = -1421,
    errFSBadIteratorFlags = -1422, errFSIteratorNotFound = -1423,
    errFSIteratorNotSupported = -1424, errFSQuotaExceeded = -1425,
    errFSOperationNotSupported = -1426, errFSAttributeNotFound = -1427,
    errFSPropertyNotValid = -1428, errFSNotEnoughSpaceForOperation = -1429,
    afpAccessDenied = -5000, afpObjectTypeErr = -5025,

    /* Resource Manager. */
    resNotFound = -192, resFNotFound = -193, addResFailed = -194,
    rmvResFailed = -196, resAttrErr = -198, mapReadErr = -199,

    /* Process Manager. */
    procNotFound = -600, memFragErr = -601, appModeErr = -602, protocolErr = -603,
    hardwareConfigErr = -604, appMemFullErr = -605, appIsDaemon = -606,
    bufferIsSmall = -607, noOutstandingHLE = -608, connectionInvalid = -609,
    noUserInteractionAllowed = -610,

    /* Apple Event Manager and scripting. */
    errAECoercionFail = -1700, errAEDescNotFound = -1701, errAECorruptData = -1702,
    errAEWrongDataType = -1703, errAENotAEDesc = -1704, errAEBadListItem = -1705,
    errAENewerVersion = -1706, errAENotAppleEvent = -1707, errAEEventNotHandled = -1708,
    errAEReplyNotValid = -1709, errAEUnknownSendMode = -1710, errAEWaitCanceled = -1711,
    errAETimeout = -1712, errAENoUserInteraction = -1713, errAEBufferTooSmall = -1741,
    errAENotASpecialFunction = -1714, errAEParamMissed = -1715,
    errAEUnknownAddressType = -1716, errAEHandlerNotFound = -1717,
    errAEReplyNotArrived = -1718, errAEIllegalIndex = -1719,
    errAEEventFailed = -10000, errAENotModifiable = -10003, errAEPrivilegeError = -10004,
    errOSASystemError = -1750, errOSAInvalidID = -1751, errOSABadStorageType = -1752,
    errOSAScriptError = -1753, errOSABadSelector = -1754,
    errOSASourceNotAvailable = -1756, errOSANoSuchDialect = -1757,
    errOSADataFormatObsolete = -1758, errOSADataFormatTooNew = -1759,
    errOSAComponentMismatch = -1761, errOSACantOpenComponent = -1762,
    errOSACantCoerce = errAECoercionFail,

    /* Gestalt. */
    gestaltUnknownErr = -5550, gestaltUndefSelectorErr = -5551,
    gestaltDupSelectorErr = -5552, gestaltLocationErr = -5553,

    /* Text Encoding Converter. */
    kTextUnsupportedEncodingErr = -8738, kTextMalformedInputErr = -8739,
    kTextUndefinedElementErr = -8740, kTECMissingTableErr = -8745,
    kTECTableChecksumErr = -8746, kTECTableFormatErr = -8747,
    kTECCorruptConverterErr = -8748, kTECNoConversionPathErr = -8749,
    kTECBufferBelowMinimumSizeErr = -8750, kTECArrayFullErr = -8751,
    kTECBadTextRunErr = -8752, kTECPartialCharErr = -8753,
    kTECUnmappableElementErr = -8754, kTECIncompleteElementErr = -8755,
    kTECDirectionErr = -8756, kTECGlobalsUnavailableErr = -8770,
    kTECItemUnavailableErr = -8771, kTECUsedFallbacksStatus = -8783,
    kTECNeedFlushStatus = -8784, kTECOutputBufferFullStatus = -8785,

    /* Launch Services. */
    kLSAppInTrashErr = -10660, kLSUnknownErr = -10810, kLSNotAnApplicationErr = -10811,
    kLSNotInitializedErr = -10812, kLSDataUnavailableErr = -10813,
    kLSApplicationNotFoundErr = -10814, kLSUnknownTypeErr = -10815,
    kLSDataTooOldErr = -10816, kLSDataErr = -10817, kLSLaunchInProgressErr = -10818,
    kLSNotRegisteredErr = -10819, kLSAppDoesNotClaimTypeErr = -10820,
    kLSAppDoesNotSupportSchemeWarning = -10821, kLSServerCommunicationErr = -10822,
    kLSCannotSetInfoErr = -10823, kLSNoRegistrationInfoErr = -10824,
    kLSIncompatibleSystemVersionErr = -10825, kLSNoLaunchPermissionErr = -10826,
    kLSNoExecutableErr = -10827, kLSNoClassicEnvironmentErr = -10828,
    kLSMultipleSessionsNotSupportedErr = -10829,

    /* Carbon events. */
    eventAlreadyPostedErr = -9860, eventTargetBusyErr = -9861,
    eventClassInvalidErr = -9862, eventClassIncorrectErr = -9864,
    eventHandlerAlreadyInstalledErr = -9866, eventInternalErr = -9868,
    eventKindIncorrectErr = -9869, eventParameterNotFoundErr = -9870,
    eventNotHandledErr = -9874, eventLoopTimedOutErr = -9875,
    eventLoopQuitErr = -9876, eventNotInQueueErr = -9877,

    coreFoundationUnknownErr = -4960
};

#endif
