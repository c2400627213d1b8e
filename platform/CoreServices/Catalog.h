/* Catalog information of looked-up objects, shared by FSGetCatalogInfo and
 * the iterator. */
#ifndef KORU_PLATFORM_CATALOG_H
#define KORU_PLATFORM_CATALOG_H

#include "FileRef.h"

namespace filemanager {

/* Fills whatever of the out arguments is not NULL for node. */
OSErr FillCatalogInfo(const Node &node, FSCatalogInfoBitmap whichInfo, FSCatalogInfo *info,
                      HFSUniStr255 *name, FSSpec *fsSpec, FSRef *parentRef);

/* Applies the settable fields named by whichInfo to node. */
OSErr ApplyCatalogInfo(const Node &node, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo &info);

} // namespace filemanager

#endif
