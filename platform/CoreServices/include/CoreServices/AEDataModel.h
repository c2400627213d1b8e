/* Apple Event Manager data model: descriptors.
 *
 * An AEDesc is a four-character type and a private copy of its data bytes.
 * AECreateDesc copies the caller's bytes in; AEGetDescData copies them out.
 * The caller owns every descriptor it creates or duplicates and ends it with
 * AEDisposeDesc, which leaves a null descriptor behind (so disposing twice is
 * harmless).  A descriptor is used by one thread at a time. */
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
    typeData = 0x74647461                   /* 'tdta' */
};

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
