/* Application services provided for Linux: the Process Manager. */
#ifndef APPLICATIONSERVICES_APPLICATIONSERVICES_H
#define APPLICATIONSERVICES_APPLICATIONSERVICES_H

#include <CoreServices/CoreServices.h>
#include <ApplicationServices/Processes.h>

#endif
