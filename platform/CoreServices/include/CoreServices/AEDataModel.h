/* Apple Event Manager data model: descriptors, lists, records and events.
 *
 * An AEDesc is a four-character type and a private copy of its data bytes.
 * AECreateDesc copies the caller's bytes in; AEGetDescData copies them out.
 * Lists ('list'), records ('reco') and Apple events ('aevt') hold their
 * items as descriptors of their own; an event holds its parameters like a
 * record and its attributes (class, id, address, return id, ...) apart.
 * Everything put into a list, record or event is copied, and everything
 * taken out is a new copy.  The caller owns every descriptor it creates,
 * duplicates or gets, and ends it with AEDisposeDesc, which leaves a null
 * descriptor behind (so disposing twice is harmless).  A descriptor is used by
 * one thread at a time.
 *
 * Coercion converts between text ('TEXT' in the system encoding, 'utf8',
 * 'utxt' UTF-16 in host byte order), the integer and real types, booleans,
 * four-character codes ('type', 'enum', 'keyw'), processes ('psn ', 'kpid')
 * and file references ('alis', 'fsrf', 'furl', and text as a POSIX path).
 * Anything coerces to its own type and to '****'; an item coerces to a list of
 * one item.  A conversion that would lose the value answers errAECoercionFail. */
#ifndef CORESERVICES_AEDATAMODEL_H
#define CORESERVICES_AEDATAMODEL_H

#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef FourCharCode DescType;
typedef FourCharCode AEKeyword;

typedef struct OpaqueAEDataStorageType *AEDataStorage;

typedef struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle;
} AEDesc;
typedef AEDesc AEDescList;
typedef AEDesc AERecord;
typedef AEDesc AEAddressDesc;
typedef AEDesc AppleEvent;

/* Descriptor types, written in hex because multi-character constants draw
 * compiler warnings; the four characters are given beside each. */
enum {
    typeNull = 0x6E756C6C,                  /* 'null' */
    typeWildCard = 0x2A2A2A2A,              /* '****' */
    typeBoolean = 0x626F6F6C,               /* 'bool' */
    typeTrue = 0x74727565,                  /* 'true' */
    typeFalse = 0x66616C73,                 /* 'fals' */
    typeSInt16 = 0x73686F72,                /* 'shor' */
    typeSInt32 = 0x6C6F6E67,                /* 'long' */
    typeUInt32 = 0x6D61676E,                /* 'magn' */
    typeSInt64 = 0x636F6D70,                /* 'comp' */
    typeIEEE32BitFloatingPoint = 0x73696E67, /* 'sing' */
    typeIEEE64BitFloatingPoint = 0x646F7562, /* 'doub' */
    typeChar = 0x54455854,                  /* 'TEXT' */
    typeText = 0x54455854,                  /* 'TEXT' */
    typeUTF8Text = 0x75746638,              /* 'utf8' */
    typeUnicodeText = 0x75747874,           /* 'utxt' */
    typeUTF16ExternalRepresentation = 0x75743136, /* 'ut16' */
    typeType = 0x74797065,                  /* 'type' */
    typeEnumerated = 0x656E756D,            /* 'enum' */
    typeKeyword = 0x6B657977,               /* 'keyw' */
    typeAEList = 0x6C697374,                /* 'list' */
    typeAERecord = 0x7265636F,              /* 'reco' */
    typeAppleEvent = 0x61657674,            /* 'aevt' */
    typeFSRef = 0x66737266,                 /* 'fsrf' */
    typeFSS = 0x66737320,                   /* 'fss ' */
    typeAlias = 0x616C6973,                 /* 'alis' */
    typeFileURL = 0x6675726C,               /* 'furl' */
    typeProcessSerialNumber = 0x70736E20,   /* 'psn ' */
    typeKernelProcessID = 0x6B706964,       /* 'kpid' */
    typeApplSignature = 0x7369676E,         /* 'sign' */
    typeApplicationBundleID = 0x62756E64,   /* 'bund' */
    typeData = 0x74647461,                  /* 'tdta' */
    typeLongDateTime = 0x6C647420,          /* 'ldt ' */
    typeScript = 0x73637074,                /* 'scpt' */
    typeOSAErrorRange = 0x65726E67          /* 'erng' */
};

typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef SInt16 AEReturnID;
typedef SInt32 AETransactionID;

/* Keywords of parameters and attributes. */
enum {
    keyDirectObject = 0x2D2D2D2D,           /* '----' */
    keyErrorNumber = 0x6572726E,            /* 'errn' */
    keyErrorString = 0x65727273,            /* 'errs' */
    keyAEResult = 0x2D2D2D2D,               /* '----' */
    keyTransactionIDAttr = 0x7472616E,      /* 'tran' */
    keyReturnIDAttr = 0x72746964,           /* 'rtid' */
    keyEventClassAttr = 0x6576636C,         /* 'evcl' */
    keyEventIDAttr = 0x65766964,            /* 'evid' */
    keyAddressAttr = 0x61646472,            /* 'addr' */
    keyOptionalKeywordAttr = 0x6F70746B,    /* 'optk' */
    keyTimeoutAttr = 0x74696D6F,            /* 'timo' */
    keyEventSourceAttr = 0x65737263,        /* 'esrc' */
    keyOriginalAddressAttr = 0x66726F6D,    /* 'from' */
    keySenderPIDAttr = 0x73706964           /* 'spid' */
};

enum {
    kAutoGenerateReturnID = -1,
    kAnyTransactionID = 0
};

/* --- Lists and records (an event counts as a record of its parameters) --- */

/* Makes an empty list, or an empty record when isRecord is true.  The factoring
 * hints are accepted and ignored.  paramErr for a NULL result. */
OSErr AECreateList(const void *factoringPtr, Size factoredSize, Boolean isRecord,
                   AEDescList *resultList);

/* The number of items of a list or record (parameters of an event);
 * errAEWrongDataType for any other descriptor, paramErr for NULL. */
OSErr AECountItems(const AEDescList *theAEDescList, long *theCount);

/* Puts a copy at index (1-based); index 0 or count + 1 appends.  In a record
 * the item keeps its keyword ('****' for an item put by index). */
OSErr AEPutPtr(AEDescList *theAEDescList, long index, DescType typeCode, const void *dataPtr,
               Size dataSize);
OSErr AEPutDesc(AEDescList *theAEDescList, long index, const AEDesc *theAEDesc);

/* Gets item index coerced to desiredType ('****' for as it is).  The Ptr form
 * copies at most maximumSize bytes and reports the full size in *actualSize;
 * errAEIllegalIndex for an index out of range. */
OSErr AEGetNthPtr(const AEDescList *theAEDescList, long index, DescType desiredType,
                  AEKeyword *theAEKeyword, DescType *typeCode, void *dataPtr, Size maximumSize,
                  Size *actualSize);
OSErr AEGetNthDesc(const AEDescList *theAEDescList, long index, DescType desiredType,
                   AEKeyword *theAEKeyword, AEDesc *result);
OSErr AESizeOfNthItem(const AEDescList *theAEDescList, long index, DescType *typeCode,
                      Size *dataSize);
OSErr AEDeleteItem(AEDescList *theAEDescList, long index);

/* True for a record or an event. */
Boolean AECheckIsRecord(const AEDesc *theDesc);

/* Keyed items of a record: putting replaces an item of the same keyword;
 * errAEDescNotFound when the keyword is missing. */
OSErr AEPutKeyPtr(AERecord *theAERecord, AEKeyword theAEKeyword, DescType typeCode,
                  const void *dataPtr, Size dataSize);
OSErr AEPutKeyDesc(AERecord *theAERecord, AEKeyword theAEKeyword, const AEDesc *theAEDesc);
OSErr AEGetKeyPtr(const AERecord *theAERecord, AEKeyword theAEKeyword, DescType desiredType,
                  DescType *typeCode, void *dataPtr, Size maximumSize, Size *actualSize);
OSErr AEGetKeyDesc(const AERecord *theAERecord, AEKeyword theAEKeyword, DescType desiredType,
                   AEDesc *result);
OSErr AESizeOfKeyDesc(const AERecord *theAERecord, AEKeyword theAEKeyword, DescType *typeCode,
                      Size *dataSize);
OSErr AEDeleteKeyDesc(AERecord *theAERecord, AEKeyword theAEKeyword);

/* --- Apple events ---------------------------------------------------------- */

/* Makes an event with the class, id, a copy of the target address and the
 * return and transaction ids as attributes; kAutoGenerateReturnID picks a
 * fresh return id.  paramErr for a NULL result, errAEWrongDataType for a
 * target that is not a plain descriptor. */
OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID,
                         const AEAddressDesc *target, AEReturnID returnID,
                         AETransactionID transactionID, AppleEvent *result);

/* Parameters: the keyed items of the event.  errAENotAppleEvent when the
 * descriptor is no event. */
OSErr AEPutParamPtr(AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType typeCode,
                    const void *dataPtr, Size dataSize);
OSErr AEPutParamDesc(AppleEvent *theAppleEvent, AEKeyword theAEKeyword, const AEDesc *theAEDesc);
OSErr AEGetParamPtr(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType desiredType,
                    DescType *typeCode, void *dataPtr, Size maximumSize, Size *actualSize);
OSErr AEGetParamDesc(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                     DescType desiredType, AEDesc *result);
OSErr AESizeOfParam(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType *typeCode,
                    Size *dataSize);
OSErr AEDeleteParam(AppleEvent *theAppleEvent, AEKeyword theAEKeyword);

/* Attributes: kept apart from the parameters. */
OSErr AEPutAttributePtr(AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType typeCode,
                        const void *dataPtr, Size dataSize);
OSErr AEPutAttributeDesc(AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                         const AEDesc *theAEDesc);
OSErr AEGetAttributePtr(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                        DescType desiredType, DescType *typeCode, void *dataPtr, Size maximumSize,
                        Size *actualSize);
OSErr AEGetAttributeDesc(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                         DescType desiredType, AEDesc *result);

/* --- Coercion -------------------------------------------------------------- */

/* A new descriptor of toType holding the value of theAEDesc / of the bytes;
 * errAECoercionFail when there is no conversion or the value does not fit. */
OSErr AECoerceDesc(const AEDesc *theAEDesc, DescType toType, AEDesc *result);
OSErr AECoercePtr(DescType typeCode, const void *dataPtr, Size dataSize, DescType toType,
                  AEDesc *result);

/* --- Flattening ------------------------------------------------------------ */

/* A descriptor of any kind as a byte stream and back (what carries events
 * between processes).  AEFlattenDesc fails with errAEBufferTooSmall when the
 * buffer is smaller than AESizeOfFlattenedDesc; AEUnflattenDesc answers
 * errAECorruptData for bytes that are no flattened descriptor. */
Size AESizeOfFlattenedDesc(const AEDesc *theAEDesc);
OSStatus AEFlattenDesc(const AEDesc *theAEDesc, Ptr buffer, Size bufferSize, Size *actualSize);
OSStatus AEUnflattenDesc(const void *buffer, AEDesc *result);

/* Sets the descriptor to the null descriptor without freeing anything. */
void AEInitializeDesc(AEDesc *desc);

/* Makes a descriptor of the given type holding a copy of the bytes.  paramErr
 * for a NULL result pointer or for NULL data with a positive size; memFullErr
 * when the copy cannot be allocated.  On failure the result is a null
 * descriptor. */
OSErr AECreateDesc(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *result);

/* Copies up to maximumSize bytes of the descriptor's data into the buffer;
 * paramErr for NULL pointers or a negative size. */
OSErr AEGetDescData(const AEDesc *theAEDesc, void *dataPtr, Size maximumSize);

/* The number of data bytes; 0 for NULL or a null descriptor. */
Size AEGetDescDataSize(const AEDesc *theAEDesc);

/* Replaces the data, and the type, of an existing descriptor. */
OSErr AEReplaceDescData(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *theAEDesc);

/* Makes an independent copy; the result must be disposed of separately. */
OSErr AEDuplicateDesc(const AEDesc *theAEDesc, AEDesc *result);

/* Frees the data and leaves a null descriptor; paramErr for NULL. */
OSErr AEDisposeDesc(AEDesc *theAEDesc);

#ifdef __cplusplus
}
#endif

#endif
