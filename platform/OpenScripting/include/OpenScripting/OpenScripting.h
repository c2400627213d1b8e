/* The Open Scripting Architecture provided for Linux. */
#ifndef OPENSCRIPTING_OPENSCRIPTING_H
#define OPENSCRIPTING_OPENSCRIPTING_H

#include <OpenScripting/OSA.h>

#endif
