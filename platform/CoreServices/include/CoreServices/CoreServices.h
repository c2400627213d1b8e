/* The Carbon core services provided for Linux: files, folders, aliases,
 * Gestalt, text encodings, Apple events, components and Launch Services. */
#ifndef CORESERVICES_CORESERVICES_H
#define CORESERVICES_CORESERVICES_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Files.h>
#include <CoreServices/Resources.h>
#include <CoreServices/Aliases.h>
#include <CoreServices/Folders.h>
#include <CoreServices/Gestalt.h>
#include <CoreServices/Debugging.h>
#include <CoreServices/TextEncodingConverter.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/AppleEvents.h>
#include <CoreServices/Components.h>
#include <CoreServices/LaunchServices.h>

#endif
