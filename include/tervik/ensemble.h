#ifndef TERVIK_ENSEMBLE_H
#define TERVIK_ENSEMBLE_H

// Statistics over the members of an ensemble forecast, for scalar elements and wind.

#include <tervik/export.h>
#include <tervik/records.h>

#endif
