/* Everything of Carbon that is provided for Linux. */
#ifndef CARBON_CARBON_H
#define CARBON_CARBON_H

#include <CoreServices/CoreServices.h>
#include <ApplicationServices/ApplicationServices.h>
#include <OpenScripting/OpenScripting.h>
#include <HIToolbox/HIToolbox.h>

#endif
